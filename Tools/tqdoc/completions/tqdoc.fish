# Fish completion for tqdoc.

function __tqdoc_is
    __fish_seen_subcommand_from $argv
end

# Files with these endings, and folders.
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

complete -c tqdoc -n __fish_use_subcommand -a import -d 'import an SVG drawing into an archive'
complete -c tqdoc -n __fish_use_subcommand -a show -d 'print the tree with names, kinds and tight bounds'
complete -c tqdoc -n __fish_use_subcommand -a render -d 'render drawings to PNG files'
complete -c tqdoc -n __fish_use_subcommand -a hit -d 'list what is at a point or in a rect, topmost first'
complete -c tqdoc -n __fish_use_subcommand -a sheet -d 'render drawings beside their reopened archives to one PNG file'
complete -c tqdoc -n __fish_use_subcommand -a diff -d 'compare two versions of a drawing'
complete -c tqdoc -n __fish_use_subcommand -a patch -d 'apply the output of diff --json to a drawing'
complete -c tqdoc -n __fish_use_subcommand -a check -d 'save, reopen and save drawings again; compare the results'
complete -c tqdoc -n __fish_use_subcommand -a recent -d 'list recently opened drawings, latest first'
complete -c tqdoc -n __fish_use_subcommand -a options -d 'print or set the defaults of options'

complete -c tqdoc -n '__tqdoc_is import' -a '(__tqdoc_files svg svgz)'
complete -c tqdoc -n '__tqdoc_is show render hit sheet diff patch check' -a '(__tqdoc_files svg svgz tqdoc)'

complete -c tqdoc -n '__tqdoc_is patch' -a '(__tqdoc_files json)'

complete -c tqdoc -n '__tqdoc_is import patch' -s o -l output -x -a '(__tqdoc_files tqdoc)' -d 'the archive'
complete -c tqdoc -n '__tqdoc_is patch' -l partial -d 'write the result even if some changes do not fit'
complete -c tqdoc -n '__tqdoc_is import patch' -l gzip -d 'compress the archive with gzip'
complete -c tqdoc -n '__tqdoc_is import patch' -l no-gzip -d 'do not compress the archive'

complete -c tqdoc -n '__tqdoc_is render sheet' -s o -l output -x -a '(__tqdoc_files png)' -d 'the PNG file'
complete -c tqdoc -n '__tqdoc_is render hit' -l width -x -d 'width in pixels'
complete -c tqdoc -n '__tqdoc_is render' -l bounds -d 'mark the tight bounds of every shape'
complete -c tqdoc -n '__tqdoc_is render' -l controls -d 'draw the control polygon of every outline'
complete -c tqdoc -n '__tqdoc_is render' -l intersections -d 'mark the intersections of outlines'

complete -c tqdoc -n '__tqdoc_is hit' -l png -x -a '(__tqdoc_files png)' -d 'write a PNG file of the drawing with the hits marked'
complete -c tqdoc -n '__tqdoc_is diff' -l png -x -a '(__tqdoc_files png)' -d 'write a PNG file of both versions'
complete -c tqdoc -n '__tqdoc_is diff' -l html -x -a '(__tqdoc_files html)' -d 'write a web page of both versions'
complete -c tqdoc -n '__tqdoc_is diff' -l git -x -d 'compare the drawings of a range of revisions'
complete -c tqdoc -n '__tqdoc_is hit diff' -l json -d 'print a JSON array of records'
complete -c tqdoc -n '__tqdoc_is show' -l json -d 'print a JSON object'
complete -c tqdoc -n '__tqdoc_is check' -l json -d 'print the totals as a JSON object'
complete -c tqdoc -n '__tqdoc_is diff sheet' -l size -x -d 'width of a drawing in pixels'

complete -c tqdoc -n '__tqdoc_is sheet' -l count -x -d 'number of drawings'
complete -c tqdoc -n '__tqdoc_is sheet' -l columns -x -d 'drawings in each row'

complete -c tqdoc -n '__tqdoc_is check' -l draw -d 'also render both drawings and compare every pixel'
complete -c tqdoc -n '__tqdoc_is check' -s v -l verbose -d 'print the unsupported features of each drawing'

complete -c tqdoc -n '__tqdoc_is recent' -l clear -d 'clear the list'

complete -c tqdoc -n '__tqdoc_is options' -l reset -d 'restore the default'
set -l names colours gzip width recent
complete -c tqdoc -n "__tqdoc_is options; and not __tqdoc_is $names" -a colours -d 'when diff colours its output'
complete -c tqdoc -n "__tqdoc_is options; and not __tqdoc_is $names" -a gzip -d 'whether import compresses archives'
complete -c tqdoc -n "__tqdoc_is options; and not __tqdoc_is $names" -a width -d 'width of pictures in pixels'
complete -c tqdoc -n "__tqdoc_is options; and not __tqdoc_is $names" -a recent -d 'number of recent drawings to keep'
complete -c tqdoc -n '__tqdoc_is options; and __tqdoc_is colours' -a 'auto always never'
complete -c tqdoc -n '__tqdoc_is options; and __tqdoc_is gzip' -a 'on off'
