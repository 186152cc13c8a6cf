#include "desktop/OutcomeText.h"

#include <QCoreApplication>

#include "desktop/QtText.h"

namespace vornic {

namespace {

using Kind = OutcomeBadge::Kind;

QString text(const char* source) {
    return QCoreApplication::translate("DocumentMainWindow", source);
}

QString withRepaired(const char* sentence, const SwapResult& swap) {
    return text(sentence).arg(fileNameOf(swap.repaired));
}

// Where the original is, when it is not where it was.
QString placeOfOriginal(const SwapResult& swap) {
    if (swap.isInTrash) {
        return text("The original file is in the Trash.");
    }
    if (swap.isAside) {
        return text("The original file is beside it, called %1.").arg(fileNameOf(swap.original));
    }
    return {};
}

QString reasonOfNoSwap(const SwapResult& swap) {
    const bool hasCopy = !swap.repaired.empty();
    switch (swap.end) {
        case SwapEnd::trashFailed:
            return withRepaired(
                "Repaired, but the original file could not be moved to the Trash. It is as it was; "
                "the repaired file is the one called %1.",
                swap);
        case SwapEnd::unsaved:
            return text("No repaired file was saved.");
        case SwapEnd::copyChanged:
            return text("Another program has changed the repaired file, so that it was not used.");
        case SwapEnd::sourceChanged:
            return hasCopy ? withRepaired(
                                 "Repaired, but another program has changed the file meanwhile. It "
                                 "is as that program left it; the repaired file is the one called "
                                 "%1.",
                                 swap)
                           : text(
                                 "Another program has changed the file meanwhile. It is as that "
                                 "program left it.");
        default:
            return hasCopy ? withRepaired(
                                 "Repaired, but the repaired file could not take the place of the "
                                 "original; it is the one called %1.",
                                 swap)
                           : text("The repaired file could not take the place of the original.");
    }
}

OutcomeText notSwapped(const SwapResult& swap) {
    const bool hasCopy = !swap.repaired.empty();
    OutcomeText outcome{.kind = hasCopy ? Kind::warning : Kind::bad,
                        .text = reasonOfNoSwap(swap),
                        .showsFile = true,
                        .showsTrash = swap.isInTrash};
    const bool isAsItWas = swap.end == SwapEnd::unsaved || swap.end == SwapEnd::copyChanged;
    const QString place = placeOfOriginal(swap);
    if (!place.isEmpty()) {
        outcome.text += QStringLiteral(" ") + place;
    } else if (isAsItWas) {
        outcome.text += QStringLiteral(" ") + text("The file is as it was.");
    }
    return outcome;
}

OutcomeText textOf(const RepairResult& result) {
    switch (result.outcome) {
        case RepairOutcome::sound:
            return {.kind = Kind::good, .text = text("The file is sound.")};
        case RepairOutcome::repairedAndSwapped:
            return {.kind = Kind::good,
                    .text = text("Repaired. The original file is in the Trash."),
                    .showsFile = true,
                    .showsTrash = true};
        case RepairOutcome::repairedNotSwapped:
            return notSwapped(result.swap);
        case RepairOutcome::unable:
            return {.kind = Kind::bad, .text = text("Unable to repair. The file is as it was.")};
        case RepairOutcome::cancelled:
            return {.kind = Kind::neutral, .text = text("Cancelled. The file is as it was.")};
        case RepairOutcome::stopped:
            break;
    }
    return {.kind = Kind::bad,
            .text = text("The repair could not be carried out. The file is as it was.")};
}

}  // namespace

OutcomeText outcomeText(const RepairResult& result) {
    OutcomeText outcome = textOf(result);
    if (!result.oldCopy.empty()) {
        outcome.text +=
            QStringLiteral(" ") + text("A file that was in the way is in the Trash, called %1.")
                                      .arg(fileNameOf(result.oldCopy));
        outcome.showsTrash = true;
    }
    return outcome;
}

}  // namespace vornic
