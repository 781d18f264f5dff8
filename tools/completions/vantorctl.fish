# Completions of vantorctl for fish.

function __vantorctl_shaders
    command -q vantorctl; and vantorctl list | string replace -r '  +' \t
    __fish_complete_suffix .metal
end

# Whether the command is one of those.
function __vantorctl_is
    __fish_seen_subcommand_from $argv
end

complete -c vantorctl -f
complete -c vantorctl -s h -l help -d 'Print the help'
complete -c vantorctl -n __fish_use_subcommand -l version -d 'Print the version'

complete -c vantorctl -n __fish_use_subcommand -a list -d 'Print the catalog'
complete -c vantorctl -n __fish_use_subcommand -a set -d "Choose a display's shader and look"
complete -c vantorctl -n __fish_use_subcommand -a show -d 'Print what the state file holds'
complete -c vantorctl -n __fish_use_subcommand -a unset -d "Forget a display's shader and look"
complete -c vantorctl -n __fish_use_subcommand -a main -d 'Say which display is the main one'
complete -c vantorctl -n __fish_use_subcommand -a non-shader -d 'Mark a display without a shader'
complete -c vantorctl -n __fish_use_subcommand -a notify -d 'Tell a running extension'
complete -c vantorctl -n __fish_use_subcommand -a render -d 'Draw one frame into a PNG file'
complete -c vantorctl -n __fish_use_subcommand -a gallery -d 'Write a page of all wallpapers'
complete -c vantorctl -n __fish_use_subcommand -a check -d 'Compile as the extension would'
complete -c vantorctl -n __fish_use_subcommand -a watch -d 'Show a file anew at every save'

complete -c vantorctl -n '__vantorctl_is list show' -l json -d 'Print JSON, for programs'
complete -c vantorctl -n '__vantorctl_is set watch' -l display -x -d 'The display'
complete -c vantorctl -n '__vantorctl_is set' -l no-check -d 'Write what does not compile, too'
complete -c vantorctl -n '__vantorctl_is set' -l quiet -d 'Say nothing when all is well'
complete -c vantorctl -n '__vantorctl_is main' -l none -d 'No display is the main one'
complete -c vantorctl -n '__vantorctl_is non-shader' -l off -d 'Let it show its shader again'
complete -c vantorctl -n '__vantorctl_is render gallery' -l size -x -d 'Pixels, WxH'
complete -c vantorctl -n '__vantorctl_is render gallery' -l time -x -d 'Animation time in seconds'
complete -c vantorctl -n '__vantorctl_is render gallery' -s o -l out -r -F -d 'The file to write'
complete -c vantorctl -n '__vantorctl_is set render check' -a '(__vantorctl_shaders)'
complete -c vantorctl -n '__vantorctl_is watch' -a '(__fish_complete_suffix .metal)'

set -l look '__vantorctl_is set render watch'
complete -c vantorctl -n $look -l speed -x -d 'Animation rate'
complete -c vantorctl -n $look -l tint -x -d 'Multiply the picture: R,G,B,A'
complete -c vantorctl -n $look -l color1 -x -d 'First palette colour: R,G,B,A'
complete -c vantorctl -n $look -l color2 -x -d 'Second palette colour: R,G,B,A'
complete -c vantorctl -n $look -l color3 -x -d 'Third palette colour: R,G,B,A'
complete -c vantorctl -n $look -l background -x -d 'Background colour: R,G,B,A'
complete -c vantorctl -n $look -l params -x -d 'Four parameters: A,B,C,D'
complete -c vantorctl -n $look -l custom -x -d 'A custom slot: SLOT=VALUE'
