#pragma once
#include <cstdint>
#include <string>

class ivIOControl;
struct ivMessageNode;

// A diagnostic scope: pushed on its control's scope stack while it lives, so every message
// reported meanwhile is filed under it. Scopes are locals and nest exactly like the calls.
// The text is asked for only when a message arrives inside the scope.
class ivScope {
public:
    explicit ivScope(ivIOControl* control);
    virtual ~ivScope();
    ivScope(const ivScope&) = delete;
    ivScope& operator=(const ivScope&) = delete;

    virtual std::string GetText() const = 0;
    // The indirect object the scope is about, for leading from a message to its object;
    // false for a scope about something else.
    virtual bool NamedObject(std::uint32_t& /*num*/, std::uint32_t& /*gen*/) const { return false; }

private:
    friend class ivIOControl;
    ivIOControl* m_control;
    ivMessageNode* m_node = nullptr;  // created with the scope's first message; owned by the tree
};

// A scope with a fixed text.
class ivStdScope final : public ivScope {
public:
    ivStdScope(ivIOControl* control, std::string text) : ivScope(control), m_text(std::move(text)) {}
    std::string GetText() const override { return m_text; }

private:
    std::string m_text;
};
