// Icons for the programs on Windows.

#pragma once

#include <QImage>
#include <QString>

// Writes `picture`, a square, as an icon in the sizes that Windows shows. False when the file
// cannot be written.
bool WriteIcon(const QImage& picture, const QString& file);
