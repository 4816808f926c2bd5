#include "ui/shell/ivTheme.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

namespace {

constexpr int kBackground = 8;
constexpr int kHighlight = 207;
constexpr int kShadow = 208;
constexpr int kBorder = 202;
constexpr int kText = 240;

}  // namespace

ivTheme& ivTheme::Current() {
    static ivTheme theme;
    return theme;
}

QStringList ivTheme::Folders() {
    const QString exe = QCoreApplication::applicationDirPath();
    return {exe, QDir(exe).filePath("../share/vantrel/themes")};
}

bool ivTheme::Load(const QString& name) {
    for (const QString& folder : Folders())
        if (LoadFile(QDir(folder).filePath(name + ".thm"))) return true;
    return false;
}

bool ivTheme::LoadFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray text = file.readAll();
    ivThemeFile parsed;
    parsed.Parse(std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
    m_file = std::move(parsed);
    return true;
}

QColor ivTheme::Color(const char* section, int id, const QColor& fallback) const {
    const std::optional<std::string> value = m_file.Get(section, id);
    if (!value) return fallback;
    const QColor c(QString::fromStdString(*value));
    return c.isValid() ? c : fallback;
}

void ivTheme::Apply(QApplication& app) const {
    if (m_file.Size() == 0) return;
    // The Fusion style draws with the palette alone, so the theme looks the same everywhere.
    app.setStyle(QStyleFactory::create("Fusion"));
    QPalette p = app.style()->standardPalette();
    auto set = [&](QPalette::ColorRole role, const char* section, int id) {
        const QColor c = Color(section, id, p.color(QPalette::Active, role));
        p.setColor(QPalette::Active, role, c);
        p.setColor(QPalette::Inactive, role, c);
    };
    set(QPalette::Window, "window", kBackground);
    set(QPalette::WindowText, "window", kText);
    set(QPalette::Button, "window", kBackground);
    set(QPalette::ButtonText, "window", kText);
    set(QPalette::Base, "tree", kBackground);
    set(QPalette::AlternateBase, "tree", kShadow);
    set(QPalette::Text, "tree", kText);
    set(QPalette::Highlight, "tree", kHighlight);
    set(QPalette::HighlightedText, "tree", 209);
    set(QPalette::ToolTipBase, "hint", kBackground);
    set(QPalette::ToolTipText, "hint", kText);
    set(QPalette::PlaceholderText, "window", kShadow);
    set(QPalette::Mid, "window", kBorder);
    set(QPalette::Dark, "window", kBorder);
    // Disabled texts are the window's border colour, so they read as greyed on either theme.
    const QColor disabled = Color("window", kBorder, p.color(QPalette::Disabled, QPalette::Text));
    p.setColor(QPalette::Disabled, QPalette::Text, disabled);
    p.setColor(QPalette::Disabled, QPalette::WindowText, disabled);
    p.setColor(QPalette::Disabled, QPalette::ButtonText, disabled);
    app.setPalette(p);
}
