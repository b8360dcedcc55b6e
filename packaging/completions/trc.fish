# Completion of trc for fish.

set -l commands gen info dump find tree stats stack filter notes save convert export import tail capture apps show set sink forget config setup emit
set -l parts check show save apply diff
set -l columns Sev Count "Tic Count" "Tic Diff" Time Machine Application Component Category \
    Attributes PID TID Trace Source Stack Delta Since "Wall Time" Account

function __trc_columns --inherit-variable columns
    # Adds one more column to the list typed so far.
    set -l typed (string replace --regex '[^,]*$' '' -- (commandline --current-token))
    set typed (string replace --regex '^--columns=' '' -- $typed)
    for column in $columns
        echo $typed$column
    end
end

function __trc_names
    # Names of applications, traces and nodes of the filter. fish quotes them.
    set -l words (commandline --cut-at-cursor --current-process --tokenize)
    set -e words[1]
    set -l token (commandline --cut-at-cursor --current-token)
    set -l current (string unescape -- $token; or string replace --regex '^["\']' '' -- $token)
    trc complete -- $words "$current" 2>/dev/null
end

complete -c trc -n "not __fish_seen_subcommand_from $commands" -f
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a gen -d "Make a sample trace file"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a info -d "Print a summary of trace files"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a dump -d "Print the traces of a file"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a find -d "Print the traces whose text matches"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a tree -d "Print the traces as a procedure tree"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a stats -d "Count the traces of a file by component, pattern ..."
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a stack -d "Print call stacks with function names"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a filter -d "Check a filter text, or write options as one"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a notes -d "List or set marks and notes"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a save -d "Write the traces to a new file"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a convert -d "Convert an older file"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a export -d "Write the traces as text"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a import -d "Write another log, or other events, as traces"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a tail -d "Print live traces"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a capture -d "Write live traces to a file"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a apps -d "List traced applications"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a show -d "Show traces, settings and sink"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a set -d "Switch traces"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a sink -d "Choose where traces go"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a forget -d "Take back what is kept"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a config -d "Check, save, apply or compare configurations"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a setup -d "Do what the wizard does"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -a emit -d "Act as a traced application"
complete -c trc -s h -l help -d "Print help"
complete -c trc -n "not __fish_seen_subcommand_from $commands" -s V -l version -d "Print the version"

complete -c trc -n "__fish_seen_subcommand_from gen" -s n -l records -x -d "How many traces to write"
complete -c trc -n "__fish_seen_subcommand_from gen" -s s -l seed -x -d "Another number, other traces"
complete -c trc -n "__fish_seen_subcommand_from gen" -l old -d "The older format"

complete -c trc -n "__fish_seen_subcommand_from info" -s j -l json -d "One JSON object per file"

complete -c trc -n "__fish_seen_subcommand_from dump" -s f -l format -x -a "text jsonl" -d "Format"

complete -c trc -n "__fish_seen_subcommand_from tree" -s d -l depth -x -d "Open so many levels"
complete -c trc -n "__fish_seen_subcommand_from tree" -s j -l json -d "One JSON object per node"
complete -c trc -n "__fish_seen_subcommand_from tree" -s x -l export -d "Write the first machine to a file"
complete -c trc -n "__fish_seen_subcommand_from stats" -l by -x -a "component category application thread severity pattern" -d "Count by these"
complete -c trc -n "__fish_seen_subcommand_from stats" -s s -l sort -x -a "count value rate first last" -d "The order"
complete -c trc -n "__fish_seen_subcommand_from stats" -s t -l top -x -d "At most so many values"
complete -c trc -n "__fish_seen_subcommand_from stats" -l over-time -x -d "Count in at most so many slices of time"
complete -c trc -n "__fish_seen_subcommand_from stats" -s j -l json -d "One JSON object per value or slice"
complete -c trc -n "__fish_seen_subcommand_from stack" -s s -l symbols -x -a "(__fish_complete_directories)" -d "Folder with debug information"
complete -c trc -n "__fish_seen_subcommand_from stack" -s r -l recorded -d "Frames as they were recorded"

complete -c trc -n "__fish_seen_subcommand_from filter" -l paths -d "As the options --uncheck and --check"
complete -c trc -n "__fish_seen_subcommand_from filter" -l live -d "For traces that still come"

complete -c trc -n "__fish_seen_subcommand_from notes" -s j -l json -d "One JSON object per row"
complete -c trc -n "__fish_seen_subcommand_from notes" -s m -l mark -x -d "Mark a trace, INDEX=COLOUR"
complete -c trc -n "__fish_seen_subcommand_from notes" -s n -l note -x -d "Write a note, INDEX=TEXT"
complete -c trc -n "__fish_seen_subcommand_from notes" -l replace -d "Replace the notes of another file"
complete -c trc -n "__fish_seen_subcommand_from save; and not __fish_seen_subcommand_from config" -l replace-notes -d "Replace the marks and notes beside the new file"

complete -c trc -n "__fish_seen_subcommand_from find" -s e -l regex -d "A regular expression"
complete -c trc -n "__fish_seen_subcommand_from find" -s i -l ignore-case -d "Letters of any case"
complete -c trc -n "__fish_seen_subcommand_from find" -s w -l word -d "Whole words only"
complete -c trc -n "__fish_seen_subcommand_from find" -s P -l perl-regex -d "A Perl expression"
complete -c trc -n "__fish_seen_subcommand_from find" -l total -d "Print only how many match"
complete -c trc -n "__fish_seen_subcommand_from find" -s f -l format -x -a "text jsonl" -d "Format"


complete -c trc -n "__fish_seen_subcommand_from export" -s f -l format -x -a "csv csv-rfc4180 jsonl otlp" -d "Format"
complete -c trc -n "__fish_seen_subcommand_from export" -l hidden -d "The hidden columns too"

complete -c trc -n "__fish_seen_subcommand_from import" -l journal -d "Lines of journalctl -o json"
complete -c trc -n "__fish_seen_subcommand_from import" -l syslog -d "Lines of syslog"
complete -c trc -n "__fish_seen_subcommand_from import" -l jsonl -d "One JSON object per line"
complete -c trc -n "__fish_seen_subcommand_from import" -l regex -x -d "Lines that match, with named groups"
complete -c trc -n "__fish_seen_subcommand_from import" -l otlp -d "Logs and spans of OpenTelemetry"
complete -c trc -n "__fish_seen_subcommand_from import" -l chrome -d "Events of Chrome's trace format"
complete -c trc -n "__fish_seen_subcommand_from import" -l map -x -d "The field of a further key"
complete -c trc -n "__fish_seen_subcommand_from import" -l component -x -d "The component of all traces"
complete -c trc -n "__fish_seen_subcommand_from import" -l application -x -d "The application of traces that name none"
complete -c trc -n "__fish_seen_subcommand_from import" -l machine -x -d "The machine of traces that name none"
complete -c trc -n "__fish_seen_subcommand_from import" -l levels -x -a "syslog pino python otel" -d "What numbers of levels mean"
complete -c trc -n "__fish_seen_subcommand_from import" -l time-format -x -d "The form of times, as for strptime"
complete -c trc -n "__fish_seen_subcommand_from import" -l zone -x -a "local UTC" -d "Of times without one"
complete -c trc -n "__fish_seen_subcommand_from import" -l join -x -a "indented all none" -d "Lines that belong to the text before"

complete -c trc -n "__fish_seen_subcommand_from tail" -s f -l format -x -a "text jsonl" -d "Format"
complete -c trc -n "__fish_seen_subcommand_from tail" -l for -x -d "End after so many seconds"

complete -c trc -n "__fish_seen_subcommand_from capture" -s o -l out -r -d "The file"
complete -c trc -n "__fish_seen_subcommand_from capture" -l for -x -d "End after so many seconds"
complete -c trc -n "__fish_seen_subcommand_from capture" -l max-size -x -d "Size of a full file in MB"
complete -c trc -n "__fish_seen_subcommand_from capture" -l max-files -x -d "Keep so many full files"

complete -c trc -n "__fish_seen_subcommand_from apps show" -s j -l json -d "JSON"
set -l traces "__fish_seen_subcommand_from dump find tree stats stack save export tail capture"
complete -c trc -n $traces -s u -l utc -d "Times in UTC"
complete -c trc -n $traces -l since -x -a "'10m ago' '1h ago' '1d ago'" -d "Not before this time"
complete -c trc -n $traces -l until -x -a "'10m ago' '1h ago' now" -d "Before this time"
complete -c trc -n $traces -s n -l count -x -d "At most so many traces"
complete -c trc -n $traces -l severity -x -a "info warn warn+ error other" -d "Of these severities"
complete -c trc -n $traces -l app -x -a "(__trc_names)" -d "Only of this application"
complete -c trc -n $traces -l component -x -a "(__trc_names)" -d "Only of this component"
complete -c trc -n $traces -l category -x -a "(__trc_names)" -d "Only of this category"
complete -c trc -n $traces -s m -l machine -x -a "(__trc_names)" -d "Only of this machine"
complete -c trc -n $traces -l pid -x -a "(__trc_names)" -d "Only of this process"
complete -c trc -n $traces -l tid -x -a "(__trc_names)" -d "Only of this thread"
complete -c trc -n $traces -s v -l invert -d "Those that are not chosen"
complete -c trc -n "__fish_seen_subcommand_from tail capture" -l at-source -d "The service asks the filter text"
complete -c trc -n "$traces filter" -l where -x -a "(__trc_names)" -d "What this filter text holds for"
complete -c trc -n "$traces filter" -l check -x -a "(__trc_names)" -d "Show a node of the filter"
complete -c trc -n "$traces filter" -l uncheck -x -a "(__trc_names)" -d "Hide a node of the filter"
set -l files "__fish_seen_subcommand_from dump find tree stats stack save export"
complete -c trc -n $files -s b -l from -x -d "Index in the file of the first trace"
complete -c trc -n $files -l tail -x -d "Of the chosen traces only the last"
complete -c trc -n "__fish_seen_subcommand_from dump find tree save export tail capture" -l context -x -d "So many traces before and after"
complete -c trc -n "__fish_seen_subcommand_from dump find" -l since-row -x -d "Index of the trace that Since counts from"
complete -c trc -n "__fish_seen_subcommand_from dump find" -s F -l follow -d "Go on with what is appended"
complete -c trc -n "__fish_seen_subcommand_from dump find tail" -l color -x -a "auto always never" -d "Severities in colour"
complete -c trc -n "__fish_seen_subcommand_from dump find tail" -l colour-rules -r -a "light dark" -d "Colours of lines by these rules"
complete -c trc -n "__fish_seen_subcommand_from dump find" -l profile -r -a "(__trc_names)" -d "Columns, filter text and colours of this profile"
complete -c trc -n "__fish_seen_subcommand_from dump find export tail" -s c -l columns -x -a "(__trc_columns)" -d "The shown columns"
complete -c trc -n "__fish_seen_subcommand_from dump find tree stats stack filter save export tail capture apps" -l user -x -a "(__fish_complete_users)" -d "Only this account"

complete -c trc -n "__fish_seen_subcommand_from set" -s a -l all -d "All traces of the application"
complete -c trc -n "__fish_seen_subcommand_from set" -s p -l persist -d "For all later instances"

complete -c trc -n "__fish_seen_subcommand_from sink" -s s -l server -x -d "The machine that takes the traces"
complete -c trc -n "__fish_seen_subcommand_from sink" -s o -l file -r -d "The application writes this file"
complete -c trc -n "__fish_seen_subcommand_from sink" -l flush -d "Hand over each trace at once"
complete -c trc -n "__fish_seen_subcommand_from sink" -l max-files -x -d "Keep so many full files"
complete -c trc -n "__fish_seen_subcommand_from sink" -l max-size -x -d "Size of a full file in MB"

set -l config "__fish_seen_subcommand_from config; and not __fish_seen_subcommand_from $parts"
complete -c trc -n "$config" -f -a check -d "Read a file, and say what is wrong with it"
complete -c trc -n "$config" -f -a show -d "Show settings and sinks of a file or a machine"
complete -c trc -n "$config" -f -a save -d "Save settings and sinks of applications"
complete -c trc -n "$config" -f -a apply -d "Put a file in force on a machine"
complete -c trc -n "$config" -f -a diff -d "Print what would change"
set -l config "__fish_seen_subcommand_from config; and __fish_seen_subcommand_from"
complete -c trc -n "$config check show save apply" -s m -l machine -x -d "The machine"
complete -c trc -n "$config show" -s j -l json -d "One JSON array"
complete -c trc -n "$config save" -a "(__trc_names)"

set -l setup "__fish_seen_subcommand_from setup"
complete -c trc -n $setup -s m -l machine -x -d "A machine"
complete -c trc -n $setup -s s -l same -d "The same for all machines"
complete -c trc -n $setup -s a -l app -x -a "(__trc_names)" -d "An application"
complete -c trc -n $setup -s p -l preset -x -a "off support developer max" -d "Settings of all traces"
complete -c trc -n $setup -l monitor -d "Then print the traces of this machine"
complete -c trc -n $setup -s n -l dry-run -d "Say what would be done"

complete -c trc -n "__fish_seen_subcommand_from emit" -s a -l app -x -d "Name of the application"
complete -c trc -n "__fish_seen_subcommand_from emit" -s c -l components -x -d "Its components"
complete -c trc -n "__fish_seen_subcommand_from emit" -s r -l rate -x -d "Traces a second"
complete -c trc -n "__fish_seen_subcommand_from emit" -s n -l count -x -d "End after so many traces"
complete -c trc -n "__fish_seen_subcommand_from emit" -l text-bytes -x -d "Bytes of a text"
complete -c trc -n "__fish_seen_subcommand_from emit" -s t -l threads -x -d "Threads that trace"
complete -c trc -n "__fish_seen_subcommand_from emit" -s b -l blocks -d "Nested blocks"
complete -c trc -n "__fish_seen_subcommand_from emit" -s s -l seed -x -d "Another number, other texts"

complete -c trc -n "__fish_seen_subcommand_from tail apps emit" -f
complete -c trc -n "__fish_seen_subcommand_from show set sink forget" -f -a "(__trc_names)"
