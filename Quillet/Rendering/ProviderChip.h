#pragma once

#include <QImage>

#include "Drawing/Canvas.h"
#include "Model/Provider.h"

/// A provider's badge: its initials on a rounded square of its accent colour.
namespace ProviderChip {

/// `dimmed` is the faded look of a provider that is not connected.
void draw(Canvas& canvas, Provider provider, Rect rect, bool dimmed);

/// The badge by itself, 22 by 22 points at `scale` pixels per point.
QImage picture(Provider provider, double scale);

}  // namespace ProviderChip
