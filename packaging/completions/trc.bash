# Completion of trc for bash.

_trc_columns() {
  # The last item of a list with commas between its items; blanks inside a header are escaped.
  local headers='Sev Count Tic\ Count Tic\ Diff Time Machine Application Component Category
    Attributes PID TID Trace Source Stack'
  local done=
  [[ $1 == *,* ]] && done=${1%,*},
  local last=${1##*,}
  eval "local names=($headers)"
  local name
  COMPREPLY=()
  for name in "${names[@]}"; do
    [[ ${name,,} == "${last,,}"* ]] && COMPREPLY+=("$done${name// /\\ }")
  done
  compopt -o nospace
}

_trc() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command= word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in
      gen | info | dump | save) command=$word; break ;;
    esac
  done
  COMPREPLY=()
  case $command:$previous in
    dump:-f | dump:--format) COMPREPLY=($(compgen -W 'text jsonl' -- "$current")); return ;;
    dump:-c | dump:--columns) _trc_columns "$current"; return ;;
    gen:-n | gen:--records | gen:-s | gen:--seed) return ;;
    dump:-b | dump:--from | dump:-n | dump:--count) return ;;
  esac
  if [[ $current == -* ]]; then
    local options='--help'
    case $command in
      '') options='--help --version' ;;
      gen) options='--help --records --seed' ;;
      info) options='--help --json' ;;
      dump) options='--help --format --columns --utc --from --count' ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$current"))
  elif [[ -z $command ]]; then
    COMPREPLY=($(compgen -W 'gen info dump save' -- "$current"))
  else
    compopt -o filenames
    local IFS=$'\n'
    COMPREPLY=($(compgen -d -- "$current") $(compgen -f -X '!*.trc' -- "$current"))
  fi
}

complete -F _trc trc
