#include "ui/shell/ivIcons.h"

#include <QFile>
#include <QHash>

namespace {

// The folder of a strip's pictures in the program's resources; a strip may be known under
// the name of its library or of its resource.
QString FolderOf(const std::string& library) {
    if (library == "btn_icons_16") return "btn_icons";
    return QString::fromStdString(library);
}

}  // namespace

QIcon ivIcon(const std::string& library, int index) {
    static QHash<QString, QIcon> cache;
    const QString path = QString(":/icons/%1/%2.svg").arg(FolderOf(library)).arg(index);
    auto found = cache.find(path);
    if (found != cache.end()) return *found;
    const QIcon icon = QFile::exists(path) ? QIcon(path) : QIcon();
    cache.insert(path, icon);
    return icon;
}

QIcon ivAppIcon() {
    return QIcon(":/icons/vantrel.svg");
}
