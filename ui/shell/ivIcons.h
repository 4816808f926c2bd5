#pragma once
#include <QIcon>
#include <string>

// An icon of one of the program's image strips ("buttons_16", "btn_icons_16", "sys_buttons",
// "btn_zoom_16", "treeIcons"), by its index; a null icon when the strip has no such picture.
QIcon ivIcon(const std::string& library, int index);
// The program's own icon.
QIcon ivAppIcon();
