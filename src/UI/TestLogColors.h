#pragma once

#include <QColor>

// What the colours of a test log's lines mean.
inline const QColor bannerColor(32, 32, 224);
inline const QColor passColor(0, 0, 0); // information too
inline const QColor failureColor(255, 0, 0);
