# bash completion for kelcalc

_kelcalc() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    -e) return ;;
    --digits) mapfile -t COMPREPLY < <(compgen -W "$(echo {1..17})" -- "$word") && return ;;
    --explain)
      # Names such as ;sin and ~== must reach the command line quoted.
      local name
      while read -r name; do
        [[ $name == "${word#[\'\"]}"* ]] && COMPREPLY+=("$(printf %q "$name")")
      done < <("${COMP_WORDS[0]}" --list 2>/dev/null | awk '/^  [^ ]/ { print $1 }')
      return
      ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "-e -i --no-stack --where --no-where --strict --stop
      --digits --list --explain --help --version" -- "$word")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -X '!*.3dc' -- "$word"; compgen -d -- "$word")
  fi
}

complete -F _kelcalc kelcalc
