#pragma once
#include <string>
#include <string_view>
#include <vector>

// One command of the command table.
struct ivCommandInfo {
    std::string name;  // dotted, category first: "File.Open"
    std::string text;  // as written, a display attribute included: "500|&Open..."
    std::string hint;
    std::vector<std::string> keys;  // "Ctrl+R", "F5"
    std::string imageLibrary;       // "buttons_16", or empty
    int imageIndex = -1;
    std::string group;     // check group ("View.mode"), or empty
    std::string dropDown;  // "category", "whole" or "checked" for a drop-down, else empty

    // The text without its display attribute ("&Open..."); "&" still marks the mnemonic.
    std::string DisplayText() const;
};

// An item of a menu: a command, a separator, or a drop-down entry with its own items.
struct ivMenuItem {
    enum class Kind { Command, Separator, Popup };
    Kind kind = Kind::Command;
    std::string command;  // Command
    std::string text;     // Popup
    std::vector<ivMenuItem> items;
};

struct ivMenuDef {
    std::string name;  // "menu.main", "Context.Object", …
    std::vector<ivMenuItem> items;
};

// Command names are compared level by level without regard to case.
bool CommandNamesEqual(std::string_view a, std::string_view b);

// The command table, read from the program's text resource. Lines:
//   command NAME attribute="value" ...   (text, hint, keys, image "LIBRARY INDEX", group, dropdown)
//   menu NAME = ITEM ITEM | ITEM         ("|" is a separator)
//   popup TEXT = ITEM ...                (a drop-down entry of the menu named last)
// Blank lines and lines starting with "#" are skipped.
class ivCommandTable {
public:
    // False, with the line's number and what is wrong in `error`, for a line it cannot read;
    // the lines before it are kept.
    bool Parse(std::string_view text, std::string* error = nullptr);

    const std::vector<ivCommandInfo>& Commands() const { return m_commands; }
    const std::vector<ivMenuDef>& Menus() const { return m_menus; }
    const ivCommandInfo* Find(std::string_view name) const;
    const ivMenuDef* FindMenu(std::string_view name) const;

private:
    bool ParseCommand(std::string_view rest, std::string& error);
    bool ParseMenu(std::string_view rest, bool popup, std::string& error);

    std::vector<ivCommandInfo> m_commands;
    std::vector<ivMenuDef> m_menus;
};
