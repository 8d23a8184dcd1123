#pragma once

#include <QRect>
#include <functional>

#include "Drawing/Geometry.h"

class QObject;

/// The attached screens. Qt's rectangles count downwards from the top left; ours are in points with
/// the origin at the bottom-left of the primary screen and y upwards.
namespace Screens {

Rect fromQt(const QRect& rect);
QRect toQt(Rect rect);

/// A point in the screens' own pixels, in which tray hosts count, in Qt's coordinates.
QPoint fromNative(QPoint point);

bool contain(Point point);      ///< Whether it is on one of them.
bool meet(const QRect& frame);  ///< Whether a part of it is.

/// What a panel keeps for itself: widths from the edges of all screens together, and the range on
/// each edge, in the order of _NET_WM_STRUT_PARTIAL.
struct Strut {
    int left = 0, right = 0, top = 0, bottom = 0;
    int leftFrom = 0, leftTo = 0, rightFrom = 0, rightTo = 0;
    int topFrom = 0, topTo = 0, bottomFrom = 0, bottomTo = 0;
};

/// What a panel leaves of a screen, where all screens together are of size `desktop`.
QRect without(const Strut& panel, QRect screen, QSize desktop);

// In Qt's coordinates:

QRect desktop();                  ///< All screens together.
QRect available(QPoint nearest);  ///< Without panels, on the screen nearest to the point.
QRect availableOnPrimary();

/// `rect` moved, not resized, to lie in `area`; where it is too large its top left stays visible.
QRect clamped(QRect rect, QRect area);

/// Calls back when screens come, go, or change in size or panels, once for changes that come
/// together.
void onChange(QObject* receiver, const std::function<void()>& changed);

}  // namespace Screens
