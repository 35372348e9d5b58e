#include "themelist.h"

namespace ThemeList {

namespace {
constexpr int kScreenWidthTwips = 12500;
constexpr int kScreenHeightTwips = 9000;
constexpr int kTwipsPerPixel = 15;
}

QString themeLine(const QString &typed)
{
    return typed.toLower();
}

QPoint windowPosition(QSize windowSize)
{
    const int left = (kScreenWidthTwips - windowSize.width() * kTwipsPerPixel) / 2;
    const int top = (kScreenHeightTwips - windowSize.height() * kTwipsPerPixel) / 2;
    return {left / kTwipsPerPixel, top / kTwipsPerPixel};
}

} // namespace ThemeList
