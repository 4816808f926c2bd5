#pragma once
#include "ui/panes/ivBaseTreeFrame.h"

// The panes of the left group, which differ only in what they list.

// "Document Tree": the catalog, unfolded at once.
class ivTreeFrame : public ivBaseTreeFrame {
    Q_OBJECT
public:
    explicit ivTreeFrame(QWidget* parent = nullptr) : ivBaseTreeFrame("Document Tree", "treeFrame", parent) {}

protected:
    void Fill() override;
};

// "Pages": the page list.
class ivPageFrame : public ivBaseTreeFrame {
    Q_OBJECT
public:
    explicit ivPageFrame(QWidget* parent = nullptr) : ivBaseTreeFrame("Pages", "pageFrame", parent) {}

protected:
    void Fill() override;
};

// "Fonts" and "Images": every entry with that role, section by section.
class ivRoleFrame : public ivBaseTreeFrame {
    Q_OBJECT
public:
    ivRoleFrame(const QString& caption, const QString& objectName, std::uint8_t role,
                QWidget* parent = nullptr)
        : ivBaseTreeFrame(caption, objectName, parent), m_role(role) {}

protected:
    void Fill() override;

private:
    std::uint8_t m_role;
};
