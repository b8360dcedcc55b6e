# Completion of quord for fish.
complete -c quord -f
complete -c quord -n __fish_use_subcommand -a keys -d 'Make certificates for other machines'
complete -c quord -n __fish_use_subcommand -a status -d 'Tell whether the service runs'
complete -c quord -n __fish_use_subcommand -s f -l foreground -d 'Stay here'
complete -c quord -n __fish_use_subcommand -s l -l log-level -x -a 'error warning info debug'
complete -c quord -n __fish_use_subcommand -l listen -x -d 'Take clients at ADDRESS:PORT'
complete -c quord -n __fish_use_subcommand -l state-dir -x -a '(__fish_complete_directories)'
complete -c quord -n __fish_use_subcommand -l default-settings -x -a 'off support developer max'
complete -c quord -l socket-dir -x -a '(__fish_complete_directories)'
complete -c quord -l keys-dir -x -a '(__fish_complete_directories)'
complete -c quord -s V -l version -d 'Print the version'
complete -c quord -n '__fish_seen_subcommand_from keys' -a 'init issue'
complete -c quord -n '__fish_seen_subcommand_from init issue' -l host -x -d 'A name or address of the machine'
complete -c quord -n '__fish_seen_subcommand_from issue' -s r -l role -x -a 'monitor configure forward'
complete -c quord -n '__fish_seen_subcommand_from issue' -s o -l out -x -a '(__fish_complete_directories)'
complete -c quord -n '__fish_seen_subcommand_from init issue' -s d -l days -x
complete -c quord -n '__fish_seen_subcommand_from status' -l json -d 'For programs'
