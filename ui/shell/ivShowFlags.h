#pragma once

// How the main window shows an object that a pane or a view asks it to show.
constexpr unsigned kReuseView = 1;     // bring a view that already shows the object to the front
constexpr unsigned kBringToFront = 2;  // make the view the current tab
constexpr unsigned kSharedView = 4;    // show it in the shared view rather than a new tab
