# Completion of quord for bash.

_quord() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command= word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in
      keys | status | init | issue | stop | reload | check-config) command=$word ;;
    esac
  done
  COMPREPLY=()
  case $previous in
    -l | --log-level) COMPREPLY=($(compgen -W 'error warning info debug' -- "$current")); return ;;
    -r | --role) COMPREPLY=($(compgen -W 'monitor configure forward' -- "$current")); return ;;
    --default-settings)
      COMPREPLY=($(compgen -W 'off support developer max' -- "$current")); return ;;
    --state-dir | --socket-dir | --keys-dir | -o | --out)
      COMPREPLY=($(compgen -d -- "$current")); return ;;
    --user) COMPREPLY=($(compgen -u -- "$current")); return ;;
    --group) COMPREPLY=($(compgen -g -- "$current")); return ;;
    --role-from) COMPREPLY=($(compgen -W 'ou san' -- "$current")); return ;;
    -c | --config | --crl) COMPREPLY=($(compgen -f -- "$current")); return ;;
    --listen | --map-role | --takers | --taker-store | --host | -d | --days) return ;;
  esac
  local words
  case $command in
    keys) words='init issue --help' ;;
    init) words='--host --days --keys-dir --help' ;;
    issue) words='--role --out --host --days --keys-dir --help' ;;
    status) words='--json --socket-dir --help' ;;
    stop | reload) words='--socket-dir --help' ;;
    check-config) COMPREPLY=($(compgen -f -- "$current")); return ;;
    *) words='keys status stop reload check-config --foreground --config --log-level --listen --state-dir --socket-dir --keys-dir
         --default-settings --machine --user --group --crl --role-from --map-role --takers --taker-store --help --version' ;;
  esac
  COMPREPLY=($(compgen -W "$words" -- "$current"))
}
complete -F _quord quord
