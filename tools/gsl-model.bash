# Completion of gsl-model for bash. It works with and without the bash-completion package.

# Offers the words of a list that begin with the typed text.
_gsl_model_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

# Offers files and folders.
_gsl_model_files() {
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
  compopt -o filenames 2>/dev/null
}

_gsl_model() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} word count=0
  # bash takes the equals sign of --name=value for a word of its own.
  if [[ $current == "=" ]]; then
    current=
  elif [[ $previous == "=" ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  # The arguments that were typed before, without options.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $word != -* && $word != "=" ]]; then count=$((count + 1)); fi
  done
  if [[ $previous == --json ]]; then
    _gsl_model_files "$current"
  elif [[ $current == -* ]]; then
    _gsl_model_words "--json --quiet --force --help --version -h" "$current"
  elif [[ $count == 1 ]]; then
    _gsl_model_words "list show check convert diff" "$current"
  elif [[ $count == 0 || $previous == convert || $previous == diff ]]; then
    _gsl_model_files "$current"
  fi
}

complete -o bashdefault -o default -F _gsl_model gsl-model
