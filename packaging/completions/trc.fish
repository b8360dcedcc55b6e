# Completion of trc for fish.

set -l commands gen info dump save
set -l columns Sev Count "Tic Count" "Tic Diff" Time Machine Application Component Category \
    Attributes PID TID Trace Source Stack

function __trc_columns --inherit-variable columns
    # Adds one more column to the list typed so far.
    set -l typed (string replace --regex '[^,]*$' '' -- (commandline --current-token))
    set typed (string replace --regex '^--columns=' '' -- $typed)
    for column in $columns
        echo $typed$column
    end
end

complete -c trc -n "not __fish_seen_subcommand_from $commands" -f
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a gen -d "Make a sample trace file"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a info -d "Tell what is in trace files"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a dump -d "Print the traces of a file"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a save -d "Write the traces to a new file"
complete -c trc -s h -l help -d "Print help"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -s V -l version -d "Print the version"

complete -c trc -n "__fish_seen_subcommand_from gen" -s n -l records -x -d "How many traces to write"
complete -c trc -n "__fish_seen_subcommand_from gen" -s s -l seed -x -d "Another number, other traces"

complete -c trc -n "__fish_seen_subcommand_from info" -s j -l json -d "One JSON object per file"

complete -c trc -n "__fish_seen_subcommand_from dump" -s f -l format -x -a "text jsonl" -d "Format"
complete -c trc -n "__fish_seen_subcommand_from dump" -s c -l columns -x -a "(__trc_columns)" -d "Columns"
complete -c trc -n "__fish_seen_subcommand_from dump" -s u -l utc -d "Times in UTC"
complete -c trc -n "__fish_seen_subcommand_from dump" -s b -l from -x -d "Index of the first trace"
complete -c trc -n "__fish_seen_subcommand_from dump" -s n -l count -x -d "At most so many traces"
