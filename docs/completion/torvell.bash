# Completion of torvell in bash: source this file, or put it into the folder of bash-completion.
_torvell() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
  local options="--data --simulate --clock --seed --user --password-fd --instrument --json --quiet
    --help --help-all --version"
  local commands="discover ports status monitor constants settings calibrate standards tray run
    samples print service simulate messages users desktop"
  local command="" subcommand="" word i
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    case $word in
      --data|--clock|--seed|--user|--password-fd|--instrument) ((i++)) ;;
      -*) ;;
      *) if [[ -z $command ]]; then command=$word; elif [[ -z $subcommand ]]; then subcommand=$word; fi ;;
    esac
  done
  case $previous in
    --data) mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
    --clock) mapfile -t COMPREPLY < <(compgen -W "real virtual x20 x50" -- "$current"); return ;;
    --paper) mapfile -t COMPREPLY < <(compgen -W "a4 letter" -- "$current"); return ;;
    --theme) mapfile -t COMPREPLY < <(compgen -W "light dark" -- "$current"); return ;;
    --csv|--pdf) mapfile -t COMPREPLY < <(compgen -f -- "$current"); return ;;
  esac
  local words=""
  case $command in
    "") words=$commands ;;
    ports) words="list set clear" ;;
    constants) words="show set" ;;
    settings) words="show set export import" ;;
    calibrate) words="--temperature --all --hours --exclude --save" ;;
    standards) words="list import export conform tray" ;;
    simulate) words="oils show off" ;;
    tray) words="show load clear export" ;;
    users) words="list add passwd remove" ;;
    service) words="home temperature move precondition switch selftest abort jog" ;;
    run) words="--prepare" ;;
    desktop) words="--demo --lock-after --theme" ;;
    samples) words="--last --csv" ;;
    messages) words="--last" ;;
    print) words="constants --pdf --paper" ;;
    monitor) words="--count" ;;
  esac
  case $command,$subcommand in
    run,*|*,import|*,load|simulate,oils)
      mapfile -t COMPREPLY < <(compgen -W "$words $options" -- "$current"; compgen -f -- "$current")
      return ;;
    calibrate,*) ;;
    standards,conform) words="--temperature" ;;
    standards,tray) words="--temperature --only" ;;
    ports,set|ports,clear) words="COM1 COM2 COM3 COM4" ;;
    service,switch) words="injection motor cooling auto on off" ;;
    service,jog) words="tube table trolley" ;;
    service,temperature) words="off" ;;
    print,?*) words="--pdf --paper" ;;
    *,?*) words="" ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words $options" -- "$current")
}
complete -F _torvell torvell
