#!/usr/bin/env bash
# Makes a few damaged projects in a temporary folder, repairs them and shows the reports. They get a
# home of their own there, so that nobody's Trash, log or preferences are touched.
# Usage: demo.sh PATH_OF_VORNIC_REPAIR
set -euo pipefail

program=$(readlink -f -- "$1")
folder=$(mktemp -d -t vornic-demo-XXXXXX)
mkdir "$folder/home" "$folder/Projects"
export HOME="$folder/home"
unset XDG_DATA_HOME XDG_CACHE_HOME XDG_CONFIG_HOME
cd "$folder/Projects"

# A small project with one clip. $1: the document type declaration, $2: the clip's name.
project() {
    cat <<END
<?xml version="1.0" encoding="UTF-8"?>
$1<xmeml version="4">
    <sequence id="Rough Cut">
        <name>Rough Cut</name>
        <duration>250</duration>
        <rate>
            <timebase>25</timebase>
            <ntsc>FALSE</ntsc>
        </rate>
        <media>
            <video>
                <track>
                    <clipitem id="clipitem-1">
                        <name>$2</name>
                        <start>0</start>
                        <end>250</end>
                    </clipitem>
                </track>
            </video>
        </media>
    </sequence>
</xmeml>
END
}

doctype=$'<!DOCTYPE xmeml>\n'
project "$doctype" 'Bride & groom' >'Stray ampersand.xml'
project '' 'Interview' >'No document type.xml'
project "$doctype" $'Take\x0b 3\x01' >'Forbidden characters.xml'
project "$doctype" 'Interview' | sed '/<\/track>/d' >'Missing end tag.xml'
cat >'Missing audio reference.fcpxml' <<'END'
<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE fcpxml>
<fcpxml version="1.8">
    <resources>
        <asset id="r2" name="Interview" src="file:///Volumes/Media/Interview.mov"/>
    </resources>
    <library>
        <event name="Shoot">
            <project name="Rough Cut">
                <sequence>
                    <spine>
                        <video name="Interview" ref="r2" duration="10s">
                            <audio lane="-1" ref="r2" duration="10s"/>
                            <audio lane="-2" duration="10s"/>
                        </video>
                    </spine>
                </sequence>
            </project>
        </event>
    </library>
</fcpxml>
END

failed=0
# Repairs a file and compares the program's exit status with the one to be expected.
show() {
    local file=$1 expected=$2 status=0
    printf '%s\n' "$file" "${file//?/-}"
    "$program" "$file" || status=$?
    if ((status != expected)); then
        printf 'vornic-repair ended with status %d instead of %d.\n' "$status" "$expected" >&2
        failed=1
    fi
    printf '\n'
}

show 'Stray ampersand.xml' 0
show 'No document type.xml' 0
show 'Forbidden characters.xml' 0
show 'Missing audio reference.fcpxml' 0
show 'Missing end tag.xml' 1

cat <<END
The files are in $folder/Projects,
the damaged originals of those that were repaired in $folder/home/.Trash.
END
exit "$failed"
