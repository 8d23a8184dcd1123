#include "StripView/StripView.h"

#include "Tests/Support/Drawing.h"
#include "Tests/Support/HostileValues.h"
#include "Tests/Support/ScopedClock.h"

TEST(StripView, DrawsASegmentForEachEntry) {
    const ScopedClock clock(1'800'000'000);
    QImage icon(44, 44, QImage::Format_ARGB32_Premultiplied);
    icon.fill(QColor::fromRgbF(0.2F, 0.4F, 0.6F));
    StripView strip;
    EXPECT_EQ(strip.sizeHint(), QSize(260, 30));
    const auto draw = [&] {
        return Picture::of(Size{strip.measuredWidth(), 30}, 2,
                           [&](Canvas& c) { strip.draw(c, 30); });
    };
    for (const auto& picture : pictures("strip")) {
        SCOPED_TRACE(picture["what"]);
        std::vector<StripView::Entry> entries;
        for (const auto& row : picture["entries"])
            entries.push_back({providerOf(row),
                               row.value("icon", false) ? std::optional(icon) : std::nullopt,
                               snapshotOf(row)});
        strip.update(entries);
        EXPECT_EQ(strip.sizeHint(), QSize(picture["width"], 30));
        expectPicture(draw(), picture["drawn"]);
    }
    expectHostileValuesDrawnAtOnce([&](const UsageSnapshot& snapshot) {
        strip.update({{snapshot.provider, icon, snapshot}});
        draw();
    });
}
