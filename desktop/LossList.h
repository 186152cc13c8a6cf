#ifndef VORNIC_DESKTOP_LOSS_LIST_H
#define VORNIC_DESKTOP_LOSS_LIST_H

#include <QTreeWidget>
#include <vector>

#include "app/window/ConversionPreview.h"

namespace vornic {

/// What a conversion leaves out: how often, what, and where. Main thread.
class LossList : public QTreeWidget {
  public:
    explicit LossList(QWidget* parent);

    void show(const std::vector<ConversionLoss>& losses);
};

}  // namespace vornic

#endif
