#pragma once

#include <gtest/gtest.h>

#include <QWidget>
#include <fstream>
#include <nlohmann/json.hpp>

#include "Drawing/Picture.h"
#include "Model/UsageSnapshot.h"

// Draws the pictures that Tests/fixtures/pictures describes: a shape or a text per row. A text is
// [text, size, weight], then kern and whether digits have equal width. Rectangles grow, shrink and
// move by the widths of texts.

using nlohmann::json;

/// The widget with its children, at 2 pixels per point.
inline QImage rendered(QWidget& widget) {
    QImage image = Picture::blank({double(widget.width()), double(widget.height())}, 2);
    widget.render(&image);
    return image;
}

inline Color colorOf(const json& row) {
    if (row.is_number()) return Color::white(row);
    return {row[0], row[1], row[2], row.size() > 3 ? row[3].get<double>() : 1};
}

inline TextLine textOf(const json& row) {
    return {row[0],
            {row[1], FontWeight(row[2].get<int>()), row.size() > 3 ? row[3].get<double>() : 0,
             row.size() > 4}};
}

inline double widths(const json& row, const char* key) {
    double sum = 0;
    for (const auto& text : row.value(key, json::array()))
        sum += textOf(text).width();
    return sum;
}

inline void drawText(Canvas& canvas, const json& row) {
    const auto text = textOf(row["text"]);
    const auto anchor = row.value("anchor", std::vector<double>{0, 0}),
               clip = row.value("clip", std::vector<double>{-9e5, -9e5, 2e6, 2e6, 0});
    const Point origin{
        row["at"][0].get<double>() - widths(row, "before") - anchor[0] * text.width(),
        row["at"][1].get<double>() - anchor[1] * text.height()};
    canvas.drawClipped(text, origin, colorOf(row["color"]), {clip[0], clip[1], clip[2], clip[3]},
                       clip[4]);
}

inline void drawShape(Canvas& canvas, const json& row) {
    const auto& at = row["at"];
    const double full = at[2].get<double>() + widths(row, "wider") - widths(row, "narrower");
    const double width =
        std::clamp(full * row.value("share", 1.0), row.value("least", 0.0), row.value("most", 1e9));
    const Rect rect{at[0].get<double>() + widths(row, "after"), at[1], width, at[3]};
    const auto fade = row.value("fade", json::array());
    if (!fade.empty())
        return canvas.fillVerticalGradient(rect,
                                           {colorOf(fade[0]), colorOf(fade[1]), colorOf(fade[2])});
    const Color color = colorOf(row["color"]);
    const double radius = row.value("radius", 0.0);
    if (row.contains("glow"))
        canvas.glowRounded(rect, radius, {color.withAlpha(row["glow"][1]), row["glow"][0]});
    canvas.fillRoundedGradient(rect, radius, color,
                               row.contains("to") ? colorOf(row["to"]) : color);
    if (row.contains("line"))
        canvas.strokeRounded(rect, radius, color.withAlpha(row["line"][0]), row["line"][1]);
}

/// Fails unless the picture, at 2 pixels per point, matches the rows, except for rounding.
inline void expectPicture(const QImage& drawn, const json& rows) {
    const QImage expected =
        Picture::of({drawn.width() / 2.0, drawn.height() / 2.0}, 2, [&](Canvas& canvas) {
            for (const auto& row : rows)
                row.contains("text") ? drawText(canvas, row) : drawShape(canvas, row);
        });
    for (int i = 0; i < expected.sizeInBytes(); ++i) {
        const auto pixel = i / 4, x = pixel % expected.width(),
                   y = expected.height() - pixel / expected.width();
        ASSERT_NEAR(drawn.constBits()[i], expected.constBits()[i], 2)
            << x / 2.0 << ", " << y / 2.0 << " points";
    }
}

inline json pictures(const std::string& name) {
    return json::parse(std::ifstream(FIXTURES "/pictures/" + name + ".json"));
}

inline Provider providerOf(const json& row) {
    return *Provider::fromRawValue(row["provider"].get<std::string>());
}

/// Reset times are seconds from now.
inline std::optional<UsageSnapshot> snapshotOf(const json& row) {
    const auto& fields = row["snapshot"];
    if (fields.is_null()) return std::nullopt;
    UsageSnapshot snapshot(providerOf(row));
    snapshot.connected = fields.value("connected", true);
    const auto read = [&](const char* key, auto& field, auto zero) {
        if (fields.contains(key)) field = zero + fields[key].get<decltype(zero)>();
    };
    const std::string none;
    read("plan", snapshot.planLabel, none), read("model", snapshot.modelLabel, none);
    read("effort", snapshot.effortLabel, none), read("error", snapshot.error, none);
    read("daily", snapshot.dailyPercent, 0.0), read("weekly", snapshot.weeklyPercent, 0.0);
    read("dailyReset", snapshot.dailyResetAt, Clock::now()),
        read("weeklyReset", snapshot.weeklyResetAt, Clock::now());
    return snapshot;
}
