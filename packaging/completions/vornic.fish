# Completion of vornic, vornic-repair, vornic-check, vornic-convert and vornic-media for fish.

function __vornic_rules
    printf '%s\n' xml structure references timing values versions characters media
    vornic-check --list-rules 2>/dev/null | string replace -r ' .*' ''
end

set -l files "(__fish_complete_suffix .fcpxml; __fish_complete_suffix .xml; __fish_complete_suffix .fcpxmld)"
set -l fcpxml_versions (for minor in (seq 0 14); echo 1.$minor; end)

complete -c vornic-check -k -a "$files"
complete -c vornic-check -s r -d 'Look into folders'
complete -c vornic-check -s j -x -d 'Check so many files at once'
complete -c vornic-check -l format -x -a 'text json sarif gnu' -d 'Form of the report'
complete -c vornic-check -l report -r -d 'Write the report to a file'
complete -c vornic-check -l quiet -d 'Write no report'
complete -c vornic-check -l only -x -a '(__fish_complete_list , __vornic_rules)' -d 'Look at these rules alone'
complete -c vornic-check -l ignore -x -a '(__fish_complete_list , __vornic_rules)' -d 'Leave these rules out'
complete -c vornic-check -l least -x -a 'error warning info' -d 'Show findings from this weight on'
complete -c vornic-check -l fail-on -x -a 'error warning info never' -d 'Exit with 1 from this weight on'
complete -c vornic-check -l max -x -d 'Show so many findings of each rule'
complete -c vornic-check -l reads -x -a "1 2 3 4 5 $fcpxml_versions" -d 'What the receiver reads'
complete -c vornic-check -l media -d 'Look for the media files'
complete -c vornic-check -l fix -d 'Make safe mends, and with =RULES those that ask'
complete -c vornic-check -l set-version -x -d 'With --fix: the version of a file that declares none'
complete -c vornic-check -l dry-run -d 'With --fix: show the difference'
complete -c vornic-check -s o -r -d 'With --fix: write a copy'
complete -c vornic-check -l timeline -r -d 'Draw the sequences as an SVG'
complete -c vornic-check -l where -x -d 'Show the line of an element or attribute'
complete -c vornic-check -l list-rules -d 'List the rules'
complete -c vornic-check -l explain -x -a '(__vornic_rules)' -d 'Tell what a rule means'
complete -c vornic-check -l help -d 'Print a summary'
complete -c vornic-check -l version -d 'Print the version'

complete -c vornic-media -k -a "$files"
complete -c vornic-media -n 'test (count (commandline -opc)) -eq 1' -a 'list missing relink'
complete -c vornic-media -s r -d 'Look into folders'
complete -c vornic-media -l format -x -a 'text json csv' -d 'Form of the report'
complete -c vornic-media -l report -r -d 'Write the report to a file'
complete -c vornic-media -l quiet -d 'Write no report'
complete -c vornic-media -l unused -d 'With list: what no sequence uses'
complete -c vornic-media -l map -x -d 'With relink: what lies in OLD lies in NEW'
complete -c vornic-media -l search -x -a '(__fish_complete_directories)' -d 'With relink: look through a folder'
complete -c vornic-media -l pick -x -a 'newest longest-tail' -d 'With --search: which of several'
complete -c vornic-media -l form -x -a 'localhost triple-slash windows' -d 'With relink: how paths are written'
complete -c vornic-media -l dry-run -d 'With relink: write nothing'
complete -c vornic-media -s o -r -d 'With relink: where the result goes'
complete -c vornic-media -l in-place -d 'With relink: replace the file'
complete -c vornic-media -l help -d 'Print a summary'
complete -c vornic-media -l version -d 'Print the version'

complete -c vornic-convert -k -a "$files"
complete -c vornic-convert -l to -x -a '1 2 3 4 5 1.6 1.7 1.8 1.9 1.10 1.11 1.12 1.13 1.14' -d 'Version of the result'
complete -c vornic-convert -l lowest -d 'Tell the lowest version without loss'
complete -c vornic-convert -l assume -x -a "1 2 3 4 5 $fcpxml_versions" -d 'Read the files as this version'
complete -c vornic-convert -l strict -d 'Write nothing when something would be lost'
complete -c vornic-convert -l strip -d 'Leave out what is newer than the version of XMEML'
complete -c vornic-convert -l dry-run -d 'Tell what would be lost'
complete -c vornic-convert -s o -r -d 'Where the result goes'
complete -c vornic-convert -l in-place -d 'Put the result in the place of the file'
complete -c vornic-convert -l bundle -d 'Write a bundle'
complete -c vornic-convert -l no-bundle -d 'Write a file'
complete -c vornic-convert -l format -x -a 'text json' -d 'Form of the report'
complete -c vornic-convert -l max -x -d 'Show so many findings of each rule'
complete -c vornic-convert -l help -d 'Print a summary'
complete -c vornic-convert -l version -d 'Print the version'

complete -c vornic-repair -k -a "$files"
complete -c vornic-repair -l quiet -d 'Print no report'
complete -c vornic-repair -l undo -d 'Bring originals back'
complete -c vornic-repair -l list -d 'With --undo: show what can be undone'
complete -c vornic-repair -l force -d 'With --undo: do not ask about changed files'
complete -c vornic-repair -l salvage -d 'Make copies that load of files that are no XML any more'
complete -c vornic-repair -s o -r -d 'With --salvage: write the copy there'
complete -c vornic-repair -l format -x -a 'text json' -d 'With --salvage: format of the report'
complete -c vornic-repair -l help -d 'Print a summary'
complete -c vornic-repair -l version -d 'Print the version'

complete -c vornic -k -a "$files"
complete -c vornic -o convertxmeml -x -a '1 2 3 4 5' -d 'Convert to another version'
complete -c vornic -l help -d 'Print a summary'
complete -c vornic -l version -d 'Print the version'
