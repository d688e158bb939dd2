# Completion of gsl-mesh for bash. It works with and without the bash-completion package.

# Offers the words of a list that begin with the typed text.
_gsl_mesh_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

# Offers files and folders.
_gsl_mesh_files() {
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
  compopt -o filenames 2>/dev/null
}

_gsl_mesh() {
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
  if [[ $previous == --json || $previous == --matrix ]]; then
    _gsl_mesh_files "$current"
  elif [[ $previous == --format ]]; then
    _gsl_mesh_words "stl ply obj off" "$current"
  elif [[ $current == -* ]]; then
    _gsl_mesh_words "--matrix --json --format --quiet --force --help --version -h" "$current"
  elif [[ $count == 0 ]]; then
    _gsl_mesh_words "check convert move" "$current"
  else
    _gsl_mesh_files "$current"
  fi
}

complete -o bashdefault -o default -F _gsl_mesh gsl-mesh
