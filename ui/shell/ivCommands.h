#pragma once
#include <QHash>
#include <QObject>
#include <QString>
#include <string_view>

#include "ui/shell/ivCommandTable.h"

class QAction;
class QActionGroup;
class QMenu;
class QMenuBar;
class QWidget;

// The command table made into actions: one QAction per command, named by its dotted name
// (objectName), with its text, hint, keys, icon and check group. The menu bar and every
// context menu are built from the table's menus. A triggered action is announced by its
// name; whoever handles it decides what it does.
class ivCommands : public QObject {
    Q_OBJECT
public:
    explicit ivCommands(QObject* parent = nullptr);

    // Reads the table from a text (a resource). False when it cannot be read: the program
    // then has no menus and no keys.
    bool Load(const QString& path);
    bool LoadText(std::string_view text);

    // The one command table of the program; set at start-up.
    static ivCommands* Instance();
    static void SetInstance(ivCommands* commands);

    const ivCommandTable& Table() const { return m_table; }
    // The command's action, names compared without regard to case; null when there is none.
    QAction* Action(std::string_view name) const;
    QList<QAction*> Actions() const;

    // A menu of the table ("Context.Object"), with the shared actions; null when the table
    // has no such menu. Drop-down commands become submenus.
    QMenu* BuildMenu(std::string_view name, QWidget* parent);
    // The menu bar's drop-down entries from "menu.main".
    void BuildMenuBar(QMenuBar* bar);
    // The menu-bar or drop-down text of a command: its text without the display attribute.
    static QString TextOf(const ivCommandInfo& command);

Q_SIGNALS:
    void Triggered(const QString& name);
    // A drop-down command's submenu ("File.Recent") is about to open: fill it now.
    void DropDownOpening(const QString& name, QMenu* menu);

private:
    void MakeActions();
    void AddItems(QMenu* menu, const std::vector<ivMenuItem>& items);

    ivCommandTable m_table;
    QHash<QString, QAction*> m_actions;  // by lower-case name; owned as children
    QHash<QString, QActionGroup*> m_groups;
};
