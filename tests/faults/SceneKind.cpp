#include "tests/faults/SceneKind.h"

namespace vornic::test {

namespace {

std::string xmeml(const std::string& version, const std::string& inside) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"" +
           version + "\">\n    <sequence id=\"harbour\">\n" + inside +
           "    </sequence>\n</xmeml>\n";
}

std::string clips(int count, const std::string& name) {
    std::string text;
    for (int clip = 0; clip < count; ++clip) {
        text += "        <name>" + name + " " + std::to_string(clip) + " caf\u00e9</name>\n";
    }
    return text;
}

constexpr int kFewClips = 12;
constexpr int kManyClips = 5000;

std::string damagedLibrary() {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n"
           "<fcpxml version=\"1.10\">\n    <resources>\n"
           "        <asset id=\"r1\" name=\"Sand\"/>\n    </resources>\n    <library>\n"
           "        <event name=\"Morning caf\u00e9\">\n            <project name=\"Sand\">\n"
           "                <sequence duration=\"10s\">\n                    <spine>\n"
           "                        <video name=\"Sand\">\n"
           "                            <audio lane=\"0\"/>\n"
           "                            <audio lane=\"1\" ref=\"r1\"/>\n"
           "                        </video>\n                    </spine>\n"
           "                </sequence>\n            </project>\n        </event>\n"
           "    </library>\n</fcpxml>\n";
}

const std::string kRepaired = "The file was repaired successfully.";
const std::string kSound = "No repair was necessary.";
const std::string kUnable = "Unable to repair file.";

/// A document whose media files lie in a folder that is not there; in /etc there is one of the
/// name.
std::string linked(int clipItems) {
    std::string text = "        <media><video><track>\n";
    for (int item = 0; item < clipItems; ++item) {
        const std::string number = std::to_string(item);
        text +=
            "            <clipitem id=\"clip-" + number + "\"><name>Sand " + number +
            "</name><file id=\"file-" + number +
            "\"><pathurl>file://localhost/Volumes/RAID/os-release</pathurl></file></clipitem>\n";
    }
    return xmeml("4", text + "        </track></video></media>\n");
}

std::string cutOff(const std::string& inside) {
    const std::string whole = xmeml("4", inside);
    return whole.substr(0, whole.rfind("</sequence>"));
}

SceneKind inPlace(const std::string& name, const std::vector<std::string>& command,
                  const std::string& verb, const std::string& bytes,
                  const std::map<std::string, std::string>& others) {
    SceneKind kind{name, SceneKind::Work::inPlace, "Cut.xml", bytes, others, ""};
    kind.command = command;
    kind.verb = verb;
    return kind;
}

SceneKind copy(const std::string& name, const std::vector<std::string>& command,
               const std::string& made, const std::string& bytes,
               const std::map<std::string, std::string>& others) {
    SceneKind kind{name, SceneKind::Work::copy, "Cut.xml", bytes, others, ""};
    kind.command = command;
    kind.made = made;
    return kind;
}

SceneKind apart(SceneKind kind) {
    kind.homeIsApart = true;
    return kind;
}

std::vector<SceneKind> makeSceneKinds() {
    using Work = SceneKind::Work;
    const std::map<std::string, std::string> bystanders = {
        {"Cut 2.xml", soundDocument('y')}, {"notes.txt", "call the harbour master\n"}};
    std::map<std::string, std::string> withOldCopy = bystanders;
    withOldCopy["Cut-backup.xml"] = soundDocument('z');
    const std::string latin1 = xmeml("4", "        <name>caf\xE9</name>\n");
    const std::string large =
        xmeml("4", clips(1, "Sand & Sea") + clips(kManyClips, "Sand &amp; Sea"));
    const std::string old = xmeml("1", clips(kFewClips, "Sand &amp; Sea"));
    const std::vector<std::string> mend = {"vornic-check", "--fix"};
    const std::vector<std::string> relink = {"vornic-media", "relink", "--map",
                                             "/Volumes/RAID=/etc", "--in-place"};
    const std::vector<std::string> convert = {"vornic-convert", "--to", "5", "--in-place"};
    return {
        {"damaged", Work::repair, "Cut.xml", damagedDocument('a'), bystanders, kRepaired},
        {"sound", Work::repair, "Cut.xml", soundDocument('a'), bystanders, kSound},
        {"hopeless", Work::repair, "Cut.xml", xmeml("4", "<name>"), bystanders, kUnable},
        {"latin-1", Work::repair, "Cut.xml", latin1, bystanders, kRepaired},
        {"library", Work::repair, "Cut.fcpxml", damagedLibrary(), bystanders, kRepaired},
        {"old-copy", Work::repair, "Cut.xml", damagedDocument('a'), withOldCopy, kRepaired},
        {"large", Work::repair, "Cut.xml", large, bystanders, kRepaired},
        {"apart", Work::repair, "Cut.xml", damagedDocument('a'), bystanders, kRepaired, true},
        {"undo", Work::undo, "Cut.xml", damagedDocument('a'), bystanders, ""},
        {"undo-apart", Work::undo, "Cut.xml", damagedDocument('a'), bystanders, "", true},
        inPlace("mend", mend, "mend", damagedDocument('a'), bystanders),
        inPlace("mend-large", mend, "mend", large, bystanders),
        apart(inPlace("mend-apart", mend, "mend", damagedDocument('a'), bystanders)),
        inPlace("relink", relink, "relink", linked(kFewClips), bystanders),
        inPlace("relink-large", relink, "relink", linked(kManyClips), bystanders),
        apart(inPlace("relink-apart", relink, "relink", linked(kFewClips), bystanders)),
        inPlace("version", convert, "convert", old, bystanders),
        inPlace("version-large", convert, "convert",
                xmeml("1", clips(kManyClips, "Sand &amp; Sea")), bystanders),
        apart(inPlace("version-apart", convert, "convert", old, bystanders)),
        copy("version-new", {"vornic-convert", "--to", "5"}, "Cut (5).xml", old, bystanders),
        copy("salvage", {"vornic-repair", "--salvage"}, "Cut-salvaged.xml",
             cutOff(clips(kFewClips, "Sand")), bystanders),
        copy("salvage-large", {"vornic-repair", "--salvage"}, "Cut-salvaged.xml",
             cutOff(clips(kManyClips, "Sand")), bystanders),
        {"convert", Work::conversion, "Cut.xml", old, bystanders, ""},
        {"convert-large", Work::conversion, "Cut.xml",
         xmeml("1", clips(kManyClips, "Sand &amp; Sea")), bystanders, ""},
        {"convert-refused", Work::conversion, "Cut.xml", xmeml("4", "<name>"), bystanders,
         "Unable to load XML file"},
    };
}

}  // namespace

std::string damagedDocument(char letter) {
    return xmeml("4", clips(kFewClips, std::string("Sand & Sea ") + letter));
}

std::string soundDocument(char letter) {
    return xmeml("4", clips(kFewClips, std::string("Sand &amp; Sea ") + letter));
}

const std::vector<SceneKind>& sceneKinds() {
    static const std::vector<SceneKind> kinds = makeSceneKinds();
    return kinds;
}

std::string workingCopyName(const SceneKind& kind) {
    if (kind.work == SceneKind::Work::inPlace) {
        return "." + kind.file + ".vornic-" + kind.verb;
    }
    return kind.file.ends_with(".fcpxml") ? "Cut-backup.fcpxml" : "Cut-backup.xml";
}

}  // namespace vornic::test
