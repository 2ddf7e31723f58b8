#include "ui/shell/alert_item.h"

namespace skavlo {

QString AlertItem::actionTitle(int index) const {
    return QString::fromStdString(alert_.actions.at(static_cast<std::size_t>(index)).title);
}

bool AlertItem::hasStyle(int index, AlertActionStyle style) const {
    return alert_.actions.at(static_cast<std::size_t>(index)).style == style;
}

bool AlertItem::isCancel(int index) const {
    return hasStyle(index, AlertActionStyle::cancel);
}

bool AlertItem::isDestructive(int index) const {
    return hasStyle(index, AlertActionStyle::destructive);
}

int AlertItem::cancelIndex() const {
    for (int index = 0; index < actionCount(); ++index) {
        if (isCancel(index)) return index;
    }
    return 0;
}

void AlertItem::choose(int index) {
    if (index < 0 || index >= actionCount() || std::exchange(answered_, true)) return;
    const auto handler = alert_.actions[static_cast<std::size_t>(index)].handler;
    emit chosen();
    if (handler) handler();
}

}  // namespace skavlo
