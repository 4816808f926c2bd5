#pragma once
#include <QString>

// A widget that handles commands of the table itself (a tree, a view). Commands the main
// window does not handle go to the focused widget and then to its parents, until one
// handles them.
class ivCommandTarget {
public:
    virtual ~ivCommandTarget() = default;
    // True when the command was handled.
    virtual bool OnCommand(const QString& name) = 0;
};
