# bash completion for kelcalc

# The options, as --help tells them.
_kelcalc_options() {
  "$1" --help 2>/dev/null | sed -n 's/^  \(-[^ ,]\+\)\(, \(--[^ ]\+\)\)\?.*/\1 \3/p'
}

# What --explain takes: functions without their ";", which the shell would take for its own.
_kelcalc_names() {
  "$1" --list 2>/dev/null | sed -n 's/^  ;\?\([^ ]\+\) .*/\1/p'
}

_kelcalc() {
  local command=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} name
  COMPREPLY=()
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    -e) return ;;
    --digits) mapfile -t COMPREPLY < <(compgen -W "$(echo {1..17})" -- "$word") && return ;;
    --json) compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$word") && return ;;
    --explain)
      local typed=${word//[\\\'\"]/}
      while read -r name; do
        [[ $typed == \;* ]] && name=";$name"
        [[ $name == "$typed"* ]] || continue
        # Within quotation marks nothing else is quoted; outside, "~==" and the like must be.
        [[ $word == [\'\"]* ]] || name=$(printf %q "$name")
        COMPREPLY+=("$name")
      done < <(_kelcalc_names "$command")
      return
      ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(_kelcalc_options "$command")" -- "$word")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -X '!*.3dc' -- "$word"; compgen -d -- "$word")
  fi
}

complete -F _kelcalc kelcalc
