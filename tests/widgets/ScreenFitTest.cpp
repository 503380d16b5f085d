#include "widgets/ScreenFit.h"

#include <gtest/gtest.h>

// Found by argument-dependent lookup, so it lives where QRect does.
void PrintTo(const QRect& rect, std::ostream* out) {
    *out << rect.x() << "," << rect.y() << " " << rect.width() << "x" << rect.height();
}

namespace korvel {
namespace {

// The frame of the window manager counts: a window of the screen's size would put its title
// bar or its buttons off the screen.
TEST(FittedGeometry, KeepsTheFramedWindowOnTheWorkArea) {
    const QMargins frame(4, 30, 4, 4);
    const struct {
        const char* name;
        QRect client;
        QRect available;
        QSize minimum;
        QRect fitted;
    } rows[] = {
        // clang-format off
        {"fits as it is", {100, 100, 640, 480}, {0, 0, 1024, 768}, {}, {100, 100, 640, 480}},
        {"800x600 on 800x600", {4, 30, 800, 600}, {0, 0, 800, 600}, {}, {4, 30, 792, 566}},
        {"480x640 portrait", {4, 30, 480, 640}, {0, 0, 480, 640}, {}, {4, 30, 472, 606}},
        {"moved back on screen", {700, 500, 200, 100}, {0, 0, 800, 600}, {}, {596, 496, 200, 100}},
        {"off the top left", {-50, -20, 200, 100}, {0, 0, 800, 600}, {}, {4, 30, 200, 100}},
        {"work area beside panels", {4, 0, 300, 200}, {40, 40, 760, 560}, {}, {44, 70, 300, 200}},
        {"never below the minimum", {4, 30, 800, 600}, {0, 0, 480, 640}, {500, 300}, {4, 30, 500, 600}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(FittedGeometry(row.client, frame, row.available, row.minimum), row.fitted);
    }
}

} // namespace
} // namespace korvel
