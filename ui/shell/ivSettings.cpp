#include "ui/shell/ivSettings.h"

#include <QSettings>

namespace {

const char* const kOrganization = "Morvane Software KFT";
const char* const kApplication = "Vantrel";
const char* const kRecentGroup = "files/MRU";
constexpr int kLongestThemeName = 64;

ivSettings* g_instance = nullptr;  // not owned

class RecentStore final : public ivRecentStore {
public:
    explicit RecentStore(QSettings& store) : m_store(store) {}
    std::optional<std::string> Read(const std::string& name) override {
        const QVariant v = m_store.value(QString(kRecentGroup) + "/" + QString::fromStdString(name));
        if (!v.isValid()) return std::nullopt;
        return v.toString().toStdString();
    }
    void Clear() override { m_store.remove(kRecentGroup); }
    void Write(const std::string& name, const std::string& value) override {
        m_store.setValue(QString(kRecentGroup) + "/" + QString::fromStdString(name),
                         QString::fromStdString(value));
    }

private:
    QSettings& m_store;  // owned by the settings
};

}  // namespace

ivSettings::ivSettings()
    : m_store(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope, kOrganization,
                                          kApplication)),
      m_recent(std::make_unique<RecentStore>(*m_store)) {}

ivSettings::ivSettings(const QString& iniFile)
    : m_store(std::make_unique<QSettings>(iniFile, QSettings::IniFormat)),
      m_recent(std::make_unique<RecentStore>(*m_store)) {}

ivSettings::~ivSettings() {
    if (g_instance == this) g_instance = nullptr;
}

ivSettings* ivSettings::Instance() {
    return g_instance;
}

void ivSettings::SetInstance(ivSettings* settings) {
    g_instance = settings;
}

int ivSettings::Integer(const QString& key, int fallback) const {
    bool ok = false;
    const int v = m_store->value(key).toInt(&ok);
    return ok ? v : fallback;
}

bool ivSettings::LoadLast() const {
    return Integer("options/loadLast", 1) != 0;
}

void ivSettings::SetLoadLast(bool on) {
    m_store->setValue("options/loadLast", on ? 1 : 0);
}

int ivSettings::ActiveTab() const {
    return Integer("options/activeTab", 0);
}

void ivSettings::SetActiveTab(int tab) {
    m_store->setValue("options/activeTab", tab);
}

QString ivSettings::Theme() const {
    const QString name = m_store->value("options/theme", "white").toString().left(kLongestThemeName);
    return name.isEmpty() ? QString("white") : name;
}

void ivSettings::SetTheme(const QString& name) {
    m_store->setValue("options/theme", name.left(kLongestThemeName));
}

bool ivSettings::ExtraChecks() const {
    return Integer("options/extraChecks", 0) != 0;
}

void ivSettings::SetExtraChecks(bool on) {
    m_store->setValue("options/extraChecks", on ? 1 : 0);
}

pdfExportSettings ivSettings::Export() const {
    pdfExportSettings s;
    s.si_Folder = m_store->value("tools/si_Folder").toString().toStdString();
    s.si_keepJpeg = Integer("tools/si_keepJpeg", 0) != 0;
    s.si_name = Integer("tools/si_name", 0);
    s.si_format =
        m_store->value("tools/si_format", QString::fromStdString(s.si_format)).toString().toStdString();
    return s;
}

void ivSettings::SetExport(const pdfExportSettings& s) {
    m_store->setValue("tools/si_keepJpeg", s.si_keepJpeg ? 1 : 0);
    m_store->setValue("tools/si_name", s.si_name);
    m_store->setValue("tools/si_format", QString::fromStdString(s.si_format));
    m_store->setValue("tools/si_Folder", QString::fromStdString(s.si_Folder));
}
