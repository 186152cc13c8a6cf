#ifndef VORNIC_DESKTOP_BATCH_SHEETS_H
#define VORNIC_DESKTOP_BATCH_SHEETS_H

#include <QDialog>
#include <functional>

#include "job/batch/BatchJob.h"

namespace vornic {

using BatchStart = std::function<void(BatchRequest)>;

/// Asks into which version the files of a batch are to be converted, and where the results go. The
/// sheet goes when it is closed.
[[nodiscard]] QDialog* makeBatchConvertSheet(std::size_t files, BatchStart start, QWidget* parent);

/// Asks where the media of the files of a batch are now: in a folder that is searched, or in
/// another one than the files say.
[[nodiscard]] QDialog* makeBatchRelinkSheet(std::size_t files, BatchStart start, QWidget* parent);

}  // namespace vornic

#endif
