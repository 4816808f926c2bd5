#pragma once
#include <QString>

class QWidget;
class ivImage2d;

// The image-saving dialog: a file dialog whose filters are the export formats of this build;
// the image is written through the chosen one. False when nothing was written (cancelled, or
// the file could not be made or written).
bool SaveImageWithDialog(QWidget* parent, const ivImage2d& image, const QString& suggestedName);
