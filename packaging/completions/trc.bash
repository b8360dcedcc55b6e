# Completion of trc for bash.

_trc_columns() {
  # The last item of a list with commas between its items; blanks inside a header are escaped.
  local headers='Sev Count Tic\ Count Tic\ Diff Time Machine Application Component Category
    Attributes PID TID Trace Source Stack Delta Since Wall\ Time Account'
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

# Names of applications, traces and nodes of the filter. They come quoted; nothing in them is
# expanded.
_trc_names() {
  mapfile -t COMPREPLY < <(trc complete --bash "${COMP_LINE:0:COMP_POINT}" "$COMP_WORDBREAKS" \
    2>/dev/null)
  [[ $# -eq 0 ]] || compopt "$@"
}

# Folders, and files that end so.
_trc_files() {
  local current=$1 end
  shift
  compopt -o filenames
  local IFS=$'\n'
  COMPREPLY=($(compgen -d -- "$current"))
  for end; do COMPREPLY+=($(compgen -f -X "!*.$end" -- "$current")); done
}

_trc() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command= word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $command:$word in
      config:check | config:show | config:save | config:apply | config:diff) command="config $word"; break ;;
      :config) command=config ;;
      :gen | :info | :dump | :find | :tree | :stats | :stack | :filter | :notes | :save | :convert | :export | :import | :tail | :capture | :apps | :show | :set | :sink | :forget | :setup | :emit) command=$word; break ;;
    esac
  done
  COMPREPLY=()
  if [[ " dump find tree stats stack save export tail capture " == *" $command "* ]]; then
    case $previous in
      --severity) COMPREPLY=($(compgen -W 'info warn warn+ error other' -- "$current")); return ;;
      --app | --component | --category | -m | --machine | --pid | --tid) _trc_names; return ;;
      --where) _trc_names -o nospace; return ;;
      --since | --until) COMPREPLY=($(compgen -W '10m\ ago now' -- "$current")); return ;;
    esac
  fi
  case $command:$previous in
    filter:--*check | filter:--where) _trc_names -o nospace; return ;;
    dump:-f | dump:--format | find:-f | find:--format | tail:-f | tail:--format) COMPREPLY=($(compgen -W 'text jsonl' -- "$current")); return ;;
    export:-f | export:--format) COMPREPLY=($(compgen -W 'csv csv-rfc4180 jsonl otlp' -- "$current")); return ;;
    import:--levels) COMPREPLY=($(compgen -W 'syslog pino python otel' -- "$current")); return ;;
    import:--join) COMPREPLY=($(compgen -W 'indented all none' -- "$current")); return ;;
    import:--zone) COMPREPLY=($(compgen -W 'local UTC' -- "$current")); return ;;
    import:--regex | import:--map | import:--component | import:--application | import:--machine | import:--time-format) return ;;
    dump:-c | dump:--columns | find:-c | find:--columns | export:-c | export:--columns | tail:-c | tail:--columns) _trc_columns "$current"; return ;;
    setup:-m | setup:--machine) return ;;
    setup:-p | setup:--preset) COMPREPLY=($(compgen -W 'off support developer max' -- "$current")); return ;;
    setup:-a | setup:--app) _trc_names; return ;;
    config\ *:-m | config\ *:--machine) return ;;
    tree:-d | tree:--depth) return ;;
    stats:--by) COMPREPLY=($(compgen -W 'component category application thread severity pattern' -- "$current")); return ;;
    stats:-s | stats:--sort) COMPREPLY=($(compgen -W 'count value rate first last' -- "$current")); return ;;
    stats:-t | stats:--top | stats:--over-time) return ;;
    dump:--*check | find:--*check | tree:--*check | stats:--*check | save:--*check | export:--*check | tail:--*check | capture:--*check | stack:--*check) _trc_names -o nospace; return ;;
    *:--colour-rules) compopt -o filenames; COMPREPLY=($(compgen -W 'light dark' -- "$current") $(compgen -f -- "$current")); return ;;
    dump:--profile | find:--profile) _trc_names -o default; return ;;
    *:--color) COMPREPLY=($(compgen -W 'auto always never' -- "$current")); return ;;
    *:--tail | *:--context | *:--since-row) return ;;
    *:--user) COMPREPLY=($(compgen -u -- "$current")); return ;;
    stack:-s | stack:--symbols) compopt -o filenames; COMPREPLY=($(compgen -d -- "$current")); return ;;
    notes:-[mn] | notes:--mark | notes:--note) return ;;
    gen:-n | gen:--records | gen:-s | gen:--seed) return ;;
    dump:-[bn] | find:-[bn] | tree:-[bn] | stats:-[bn] | stack:-[bn] | save:-[bn] | export:-[bn] | tail:-n | capture:-n) return ;;
    *:--from | *:--count | *:--for) return ;;
    capture:--max-* | sink:--max-* | sink:-s | sink:--server) return ;;
    emit:-[acrnts] | emit:--[acrt]* | emit:--seed | emit:--count) return ;;
  esac
  if [[ $current == -* ]]; then
    local options='--help'
    local which='--utc --since --until --count --severity --app --component --category --machine --pid --tid --invert --check --uncheck --user --where'
    case $command in
      '') options='--help --version' ;;
      gen) options='--help --records --seed --old' ;;
      info) options='--help --json' ;;
      dump) options="--help --follow --format --color --colour-rules --profile --columns --since-row --from --tail --context $which" ;;
      find) options="--help --regex --perl-regex --ignore-case --word --total --follow --format --color --colour-rules --profile --columns --since-row --from --tail --context $which" ;;
      tree) options="--help --depth --json --export --from --tail --context $which" ;;
      stats) options="--help --by --over-time --sort --top --json --from --tail $which" ;;
      stack) options="--help --symbols --recorded --from --tail $which" ;;
      filter) options='--help --check --uncheck --user --where --paths --live' ;;
      notes) options='--help --json --mark --note --replace' ;;
      save) options="--help --replace-notes --from --tail --context $which" ;;
      export) options="--help --format --columns --hidden --from --tail --context $which" ;;
      import) options='--help --journal --syslog --jsonl --regex --otlp --chrome --map --component --application --machine --levels --time-format --zone --join' ;;
      tail) options="--help --format --color --colour-rules --columns --for --at-source --context $which" ;;
      capture) options="--help --out --for --at-source --max-size --max-files --context $which" ;;
      apps) options='--help --json --user' ;;
      show) options='--help --json' ;;
      forget) options='--help' ;;
      set) options='--help --all --persist' ;;
      sink) options='--help --server --file --flush --max-files --max-size' ;;
      config | 'config diff') options='--help' ;;
      'config check' | 'config save' | 'config apply') options='--help --machine' ;;
      'config show') options='--help --machine --json' ;;
      setup) options='--help --machine --same --app --preset --monitor --dry-run' ;;
      emit) options='--help --app --components --rate --count --text-bytes --threads --blocks --seed' ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$current"))
  elif [[ -z $command ]]; then
    COMPREPLY=($(compgen -W 'gen info dump find tree stats stack filter notes save convert export import tail capture apps show set sink forget config setup emit' -- "$current"))
  elif [[ $command == config ]]; then
    COMPREPLY=($(compgen -W 'check show save apply diff' -- "$current"))
  elif [[ $command == 'config save' && $previous != save ]]; then
    _trc_names
  elif [[ $command == config* || $command == setup ]]; then
    _trc_files "$current" tcf
  elif [[ $command == set ]]; then
    _trc_names
  elif [[ $command == show || $command == forget || $command == sink && $previous != -o && $previous != --file ]]; then
    _trc_names
  elif [[ $command == tail || $command == apps || $command == emit ]]; then
    return
  elif [[ $command == import || $command == export && $previous == *.@(trc|gz|zst) ]]; then
    compopt -o filenames
    local IFS=$'\n'
    COMPREPLY=($(compgen -f -- "$current"))
  elif [[ $command == gen || $command == convert || $command == capture ]]; then
    _trc_files "$current" trc
  else
    _trc_files "$current" trc gz zst
  fi
}

complete -F _trc trc
