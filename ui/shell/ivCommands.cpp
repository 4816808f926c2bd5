#include "ui/shell/ivCommands.h"

#include <QAction>
#include <QActionGroup>
#include <QFile>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

#include "ui/shell/ivIcons.h"

namespace {

ivCommands* g_instance = nullptr;  // not owned

QString Key(std::string_view name) {
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())).toLower();
}

}  // namespace

ivCommands::ivCommands(QObject* parent) : QObject(parent) {}

ivCommands* ivCommands::Instance() {
    return g_instance;
}

void ivCommands::SetInstance(ivCommands* commands) {
    g_instance = commands;
}

bool ivCommands::Load(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray text = file.readAll();
    return LoadText(std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
}

bool ivCommands::LoadText(std::string_view text) {
    ivCommandTable table;
    if (!table.Parse(text)) return false;
    m_table = std::move(table);
    MakeActions();
    return true;
}

QString ivCommands::TextOf(const ivCommandInfo& command) {
    return QString::fromStdString(command.DisplayText());
}

void ivCommands::MakeActions() {
    qDeleteAll(m_actions);
    m_actions.clear();
    for (const ivCommandInfo& c : m_table.Commands()) {
        auto* action = new QAction(TextOf(c), this);
        action->setObjectName(QString::fromStdString(c.name));
        if (!c.hint.empty()) {
            action->setToolTip(QString::fromStdString(c.hint));
            action->setStatusTip(QString::fromStdString(c.hint));
        }
        QList<QKeySequence> keys;
        for (const std::string& k : c.keys)
            keys << QKeySequence(QString::fromStdString(k), QKeySequence::PortableText);
        action->setShortcuts(keys);
        if (!c.imageLibrary.empty()) action->setIcon(ivIcon(c.imageLibrary, c.imageIndex));
        if (!c.group.empty()) {
            QActionGroup*& group = m_groups[Key(c.group)];
            if (!group) group = new QActionGroup(this);
            action->setCheckable(true);
            group->addAction(action);
        }
        const QString name = action->objectName();
        connect(action, &QAction::triggered, this, [this, name] { Q_EMIT Triggered(name); });
        m_actions.insert(Key(c.name), action);
    }
}

QAction* ivCommands::Action(std::string_view name) const {
    return m_actions.value(Key(name), nullptr);
}

QList<QAction*> ivCommands::Actions() const {
    QList<QAction*> out;
    for (const ivCommandInfo& c : m_table.Commands()) out << Action(c.name);
    return out;
}

void ivCommands::AddItems(QMenu* menu, const std::vector<ivMenuItem>& items) {
    for (const ivMenuItem& item : items) {
        if (item.kind == ivMenuItem::Kind::Separator) {
            menu->addSeparator();
        } else if (item.kind == ivMenuItem::Kind::Popup) {
            AddItems(menu->addMenu(QString::fromStdString(item.text)), item.items);
        } else if (const ivCommandInfo* c = m_table.Find(item.command); c && !c->dropDown.empty()) {
            // A drop-down command opens its own menu, which its handler fills before it opens.
            QMenu* sub = menu->addMenu(TextOf(*c));
            sub->setObjectName(QString::fromStdString(c->name));
            if (const ivMenuDef* def = m_table.FindMenu(c->name)) AddItems(sub, def->items);
            const QString name = QString::fromStdString(c->name);
            connect(sub, &QMenu::aboutToShow, this, [this, name, sub] { Q_EMIT DropDownOpening(name, sub); });
        } else if (QAction* action = Action(item.command)) {
            menu->addAction(action);
        }
    }
}

QMenu* ivCommands::BuildMenu(std::string_view name, QWidget* parent) {
    const ivMenuDef* def = m_table.FindMenu(name);
    if (!def) return nullptr;
    auto* menu = new QMenu(parent);
    menu->setObjectName(QString::fromStdString(def->name));
    AddItems(menu, def->items);
    return menu;
}

void ivCommands::BuildMenuBar(QMenuBar* bar) {
    const ivMenuDef* def = m_table.FindMenu("menu.main");
    if (!def) return;
    for (const ivMenuItem& item : def->items) {
        if (item.kind != ivMenuItem::Kind::Popup) continue;
        QMenu* menu = bar->addMenu(QString::fromStdString(item.text));
        AddItems(menu, item.items);
    }
}
