# Completions of vantor-agent for fish.

function __vantor_agent_outputs
    command -q vantor-agent
    and vantor-agent status --json 2>/dev/null | string replace -rf '^ *"connector": "(.*)",$' '$1'
end

function __vantor_agent_entries
    printf '%s\t%s\n' default 'What the configuration says' \
        match-desktop 'What the host application chose'
    command -q vantorctl; and vantorctl list | string replace -r '  +' \t
end

# Whether the command is one of those.
function __vantor_agent_is
    __fish_seen_subcommand_from $argv
end

# Whether so many words of "choose" are there.
function __vantor_agent_chooses
    __vantor_agent_is choose; and test (count (commandline -opc)) -eq $argv[1]
end

complete -c vantor-agent -f
complete -c vantor-agent -s h -l help -d 'Print the help'
complete -c vantor-agent -n __fish_use_subcommand -l version -d 'Print the version'

complete -c vantor-agent -n __fish_use_subcommand -a run -d 'Start the extension and show it'
complete -c vantor-agent -n __fish_use_subcommand -a picker -d 'Print what the extension offers'
complete -c vantor-agent -n __fish_use_subcommand -a status -d 'Print what a running agent does'
complete -c vantor-agent -n __fish_use_subcommand -a choose -d 'Choose what an output shows'
complete -c vantor-agent -n __fish_use_subcommand -a lock -d 'Show as on a locked screen'
complete -c vantor-agent -n __fish_use_subcommand -a unlock -d 'Show as on the desktop'
complete -c vantor-agent -n __fish_use_subcommand -a pause -d 'Let nothing move'
complete -c vantor-agent -n __fish_use_subcommand -a resume -d 'Let things move again'
complete -c vantor-agent -n __fish_use_subcommand -a reload -d 'Read the configuration again'
complete -c vantor-agent -n __fish_use_subcommand -a quit -d 'End the running agent'

complete -c vantor-agent -n '__vantor_agent_is picker status' -l json -d 'Print JSON, for programs'
complete -c vantor-agent -n '__vantor_agent_is run picker' -l extension -x \
    -a '(__fish_complete_directories)' -d "The extension's bundle folder"
complete -c vantor-agent -n '__vantor_agent_is run' -l output -x \
    -a 'headless window background' -d 'Where wallpapers are shown'
complete -c vantor-agent -n '__vantor_agent_is run' -l choose -x -d 'What a display shows'
complete -c vantor-agent -n '__vantor_agent_is run' -l mode -x \
    -a 'locked idle default' -d 'The presentation mode'
complete -c vantor-agent -n '__vantor_agent_is run' -l max-fps -x -d 'Frames a second at most'
complete -c vantor-agent -n '__vantor_agent_is run' -l seconds -x -d 'End after that long'
complete -c vantor-agent -n '__vantor_agent_is run' -l unlock-after -x -d 'Unlock after that long'
complete -c vantor-agent -n '__vantor_agent_is run' -l out -x \
    -a '(__fish_complete_directories)' -d 'Where pictures are written'
complete -c vantor-agent -n '__vantor_agent_is run' -l config -r -F -d 'The configuration file'
complete -c vantor-agent -n '__vantor_agent_is run' -l clean -d 'Forget what was set aside'
complete -c vantor-agent -n '__vantor_agent_is run' -l patience -x \
    -d 'For an extension that does not answer'
complete -c vantor-agent -n '__vantor_agent_chooses 2' -a '(__vantor_agent_outputs)'
complete -c vantor-agent -n '__vantor_agent_chooses 3' -a '(__vantor_agent_entries)'
