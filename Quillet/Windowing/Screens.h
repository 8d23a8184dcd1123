#pragma once

#include <QRect>
#include <functional>
#include <optional>

#include "Drawing/Geometry.h"

class QObject;
class QScreen;

/// The attached screens. Rectangles of the toolkit count downwards from the top left; ours are in
/// points with the origin at the bottom-left of the primary screen and y upwards.
namespace Screens {

Rect fromToolkit(const QRect& rect);
QRect toToolkit(Rect rect);

/// A point in the screens' own pixels, in which tray hosts count, in the toolkit's coordinates.
QPoint fromNative(QPoint point);

/// Whether the point is in the rectangle, minimum edges inside and maximum edges outside.
bool contains(Rect rect, Point point);

/// Whether one of the screens holds the point.
bool hold(Point point);

/// What a panel keeps for itself: widths measured from the edges of all screens together, and from
/// where to where on each edge, in the order in which panels declare it.
struct Strut {
    int left = 0, right = 0, top = 0, bottom = 0;
    int leftFrom = 0, leftTo = 0, rightFrom = 0, rightTo = 0;
    int topFrom = 0, topTo = 0, bottomFrom = 0, bottomTo = 0;
};

/// What a panel leaves of a screen of `desktop`, which is all of them together.
QRect without(const Strut& panel, QRect screen, QSize desktop);

/// The primary screen without the desktop's panels; absent while there is no screen.
std::optional<Rect> visibleFrame();

/// In the toolkit's coordinates: all screens together, and the part without panels of a screen, or
/// of the one nearest to a point.
QRect desktop();
QRect available(const QScreen* screen);
QRect available(QPoint nearest);

/// `rect` moved, not resized, to lie in `area`; where it is too large its top left corner stays
/// visible.
QRect clamped(QRect rect, QRect area);

/// Calls back, once for changes that come together, when screens come, go, or change in size or
/// panels.
void onChange(QObject* receiver, const std::function<void()>& changed);

/// Windows are X11's, on a screen that belongs to a Wayland desktop: other programs' clicks and
/// focus can't be seen.
bool areXwayland();

}  // namespace Screens
