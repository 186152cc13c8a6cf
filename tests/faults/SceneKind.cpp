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

const std::string kMended = " mended\n";
const std::string kOriginal = "The original is ";

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
    const std::string oldAndLarge = xmeml("1", clips(kManyClips, "Sand &amp; Sea"));
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
        {"mend", Work::mend, "Cut.xml", damagedDocument('a'), bystanders, kMended},
        {"mend-large", Work::mend, "Cut.xml", large, bystanders, kMended},
        {"mend-apart", Work::mend, "Cut.xml", damagedDocument('a'), bystanders, kMended, true},
        {"version", Work::version, "Cut.xml", old, bystanders, kOriginal},
        {"version-large", Work::version, "Cut.xml", oldAndLarge, bystanders, kOriginal},
        {"version-apart", Work::version, "Cut.xml", old, bystanders, kOriginal, true},
        {"convert", Work::conversion, "Cut.xml", old, bystanders, ""},
        {"convert-large", Work::conversion, "Cut.xml", oldAndLarge, bystanders, ""},
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

bool isInPlaceChange(const SceneKind& kind) {
    return kind.work == SceneKind::Work::mend || kind.work == SceneKind::Work::version;
}

std::string workingCopyName(const SceneKind& kind) {
    if (kind.work == SceneKind::Work::version) {
        return "." + kind.file + ".vornic-convert";
    }
    if (kind.work == SceneKind::Work::mend) {
        return "." + kind.file + ".vornic-mend";
    }
    return kind.file.ends_with(".fcpxml") ? "Cut-backup.fcpxml" : "Cut-backup.xml";
}

}  // namespace vornic::test
