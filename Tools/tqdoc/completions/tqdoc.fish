# Fish completion for tqdoc.

function __tqdoc_is
    __fish_seen_subcommand_from $argv
end

# Files that end so, and folders.
function __tqdoc_files
    __fish_complete_directories (commandline -ct)
    for ending in $argv
        __fish_complete_suffix .$ending | string match -- "*.$ending"
    end
end

complete -c tqdoc -f
complete -c tqdoc -s h -l help -d 'print this help'
complete -c tqdoc -n __fish_use_subcommand -l help-all -d 'print the help of every command'
complete -c tqdoc -n __fish_use_subcommand -l version -d 'print the version'

complete -c tqdoc -n __fish_use_subcommand -a import -d 'read an SVG drawing and archive it'
complete -c tqdoc -n __fish_use_subcommand -a show -d 'the tree with names, kinds and tight bounds in the drawing'
complete -c tqdoc -n __fish_use_subcommand -a render -d 'draw a drawing into a PNG file'
complete -c tqdoc -n __fish_use_subcommand -a hit -d 'what lies at a point or in a rect, top first'
complete -c tqdoc -n __fish_use_subcommand -a sheet -d 'draw drawings beside their reopened archives into one PNG file'
complete -c tqdoc -n __fish_use_subcommand -a diff -d 'what differs between two versions of a drawing'
complete -c tqdoc -n __fish_use_subcommand -a check -d 'archive drawings, reopen them, archive them again, and compare everything'
complete -c tqdoc -n __fish_use_subcommand -a recent -d 'the drawings opened last, the last one first'
complete -c tqdoc -n __fish_use_subcommand -a options -d 'what is done where the command line says nothing'

complete -c tqdoc -n '__tqdoc_is import' -a '(__tqdoc_files svg)'
complete -c tqdoc -n '__tqdoc_is show render hit sheet diff check' -a '(__tqdoc_files svg tqdoc)'

complete -c tqdoc -n '__tqdoc_is import' -s o -l output -x -a '(__tqdoc_files tqdoc)' -d 'the archive'
complete -c tqdoc -n '__tqdoc_is import' -l gzip -d 'pack the archive, as gzip does'
complete -c tqdoc -n '__tqdoc_is import' -l no-gzip -d 'leave it as text'

complete -c tqdoc -n '__tqdoc_is render sheet' -s o -l output -x -a '(__tqdoc_files png)' -d 'the PNG file'
complete -c tqdoc -n '__tqdoc_is render hit' -l width -x -d 'pixels across'
complete -c tqdoc -n '__tqdoc_is render' -l bounds -d 'mark the tight bounds of every shape'
complete -c tqdoc -n '__tqdoc_is render' -l controls -d 'join the control points of every outline'
complete -c tqdoc -n '__tqdoc_is render' -l intersections -d 'circle the points where outlines cross'

complete -c tqdoc -n '__tqdoc_is hit' -l png -x -a '(__tqdoc_files png)' -d 'a PNG file of the drawing with the hits marked'
complete -c tqdoc -n '__tqdoc_is diff' -l png -x -a '(__tqdoc_files png)' -d 'a PNG file of both'
complete -c tqdoc -n '__tqdoc_is diff' -l json -d 'tell it as an array of records'
complete -c tqdoc -n '__tqdoc_is diff sheet' -l size -x -d 'pixels across a drawing'

complete -c tqdoc -n '__tqdoc_is sheet' -l count -x -d 'how many of the drawings'
complete -c tqdoc -n '__tqdoc_is sheet' -l columns -x -d 'drawings in a row'

complete -c tqdoc -n '__tqdoc_is check' -l draw -d 'draw both and compare every pixel, too'
complete -c tqdoc -n '__tqdoc_is check' -s v -l verbose -d 'say for each drawing what is left out'

complete -c tqdoc -n '__tqdoc_is recent' -l clear -d 'forget them'

complete -c tqdoc -n '__tqdoc_is options' -l reset -d 'what it is in the beginning'
set -l names colours gzip width recent
complete -c tqdoc -n "__tqdoc_is options; and not __tqdoc_is $names" -a colours -d 'on the terminal'
complete -c tqdoc -n "__tqdoc_is options; and not __tqdoc_is $names" -a gzip -d 'import packs its archives'
complete -c tqdoc -n "__tqdoc_is options; and not __tqdoc_is $names" -a width -d 'pixels across a picture'
complete -c tqdoc -n "__tqdoc_is options; and not __tqdoc_is $names" -a recent -d 'how many drawings to remember'
complete -c tqdoc -n '__tqdoc_is options; and __tqdoc_is colours' -a 'auto always never'
complete -c tqdoc -n '__tqdoc_is options; and __tqdoc_is gzip' -a 'on off'
