# Completion of gsl-sweep for bash. It works with and without the bash-completion package.

# Offers the words of a list that begin with the typed text.
_gsl_sweep_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

# Offers folders, and files whose extension matches a pattern.
_gsl_sweep_files() {
  local name pattern='^('$1')$' names
  mapfile -t names < <(compgen -f -- "$2")
  COMPREPLY=()
  for name in "${names[@]}"; do
    local extension=${name##*.}
    if [[ -d $name || ${extension,,} =~ $pattern ]]; then COMPREPLY+=("$name"); fi
  done
  compopt -o filenames 2>/dev/null
}

_gsl_sweep() {
  local options="--direction --directions --sphere --allowance --pose --offset --one-sided --leaving
    --solid --clearance --last --patch --patch-pairs --max-distance --json --output --view --picture --format --threads --progress --quiet --verbose --force --help --version"
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  # bash takes the equals sign of --name=value for a word of its own.
  if [[ $current == "=" ]]; then
    current=
  elif [[ $previous == "=" ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  case $previous in
    -d | --direction) _gsl_sweep_words "x -x y -y z -z" "$current" ;;
    --output) _gsl_sweep_files "stl|ply|obj|off|glb" "$current" ;;
    --view) _gsl_sweep_files "html|htm" "$current" ;;
    --picture) _gsl_sweep_files "svg|png|pdf" "$current" ;;
    --format) _gsl_sweep_words "stl ply obj off" "$current" ;;
    --progress) _gsl_sweep_words "auto plain never" "$current" ;;
    --json | --pose | --directions) _gsl_sweep_files ".*" "$current" ;;
    --allowance | --clearance | --offset | --max-distance | --patch-pairs | --sphere | --threads) ;;
    *)
      if [[ $current == -* ]]; then
        _gsl_sweep_words "$options -d -h" "$current"
      else
        _gsl_sweep_files "stl|ply|obj|off|3mf|amf|dae|fbx|glb|gltf|x3d" "$current"
      fi
      ;;
  esac
}

complete -o bashdefault -o default -F _gsl_sweep gsl-sweep
