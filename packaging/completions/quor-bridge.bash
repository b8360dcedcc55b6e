# Completion of quor-bridge for bash.

_quor_bridge() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command= word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in
      init | conf | publish | read | otlp-in | otlp-out) command=$word ;;
    esac
  done
  COMPREPLY=()
  case $previous in
    --keys-dir) COMPREPLY=($(compgen -d -- "$current")); return ;;
    --crl | --header-file | --ca | --cert | --key | --state | --socket) COMPREPLY=($(compgen -f -- "$current")); return ;;
    --log-level | -l) COMPREPLY=($(compgen -W 'error warning info debug' -- "$current")); return ;;
    --replicas) COMPREPLY=($(compgen -W '1 3 5' -- "$current")); return ;;
    --engine | --max-age | --max-bytes | --max-of-app) return ;;
    --listen | --stream | --forward | --monitor | --configure) return ;;
  esac
  local words
  case $command in
    conf) words='--stream --forward --monitor --configure --help' ;;
    init) words='--engine --stream --keys-dir --replicas --max-age --max-bytes --max-of-app --change --help' ;;
    publish) words='--engine --stream --keys-dir --socket --state --log-level --help' ;;
    otlp-in) words='--listen --keys-dir --crl --log-level --help' ;;
    read) words='--help' ;;
    otlp-out) words='--header-file --ca --cert --key --state --socket --log-level --help' ;;
    *) words='init conf publish read otlp-in otlp-out --help --version' ;;
  esac
  COMPREPLY=($(compgen -W "$words" -- "$current"))
}
complete -F _quor_bridge quor-bridge
