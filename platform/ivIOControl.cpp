#include "platform/ivIOControl.h"

#include <algorithm>
#include <cstdarg>

#include "platform/ivScope.h"

ivIOControl::~ivIOControl() = default;

void ivIOControl::Pop(ivScope* scope) {
    // Scopes are locals, so they close in reverse order; tolerate a stray one all the same.
    auto it = std::find(m_scopes.rbegin(), m_scopes.rend(), scope);
    if (it != m_scopes.rend()) m_scopes.erase(std::next(it).base(), m_scopes.end());
}

ivMessageNode* ivIOControl::NodeForOpenScopes() {
    ivMessageNode* parent = &m_root;
    for (ivScope* scope : m_scopes) {
        if (!scope->m_node) {
            auto node = std::make_unique<ivMessageNode>();
            node->text = scope->GetText();
            node->isScope = true;
            node->namesObject = scope->NamedObject(node->objectNum, node->objectGen);
            scope->m_node = node.get();
            parent->children.push_back(std::move(node));
        }
        parent = scope->m_node;
    }
    return parent;
}

void ivIOControl::Message(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    std::string text = ivVFormat(format, args);
    va_end(args);
    AddMessage(std::move(text));
}

void ivIOControl::AddMessage(std::string text) {
    if (text.size() > kMaxFormatted) text.resize(kMaxFormatted);
    auto leaf = std::make_unique<ivMessageNode>();
    leaf->text = std::move(text);
    NodeForOpenScopes()->children.push_back(std::move(leaf));
    ++m_count;
    OnMessagesChanged(true);
}

void ivIOControl::ClearMessages() {
    m_root.children.clear();
    for (ivScope* scope : m_scopes) scope->m_node = nullptr;
    m_count = 0;
    OnMessagesChanged(false);
}

void ivIOControl::SetProgress(std::uint64_t done, std::uint64_t total, std::string text) {
    m_done = done;
    m_total = total;
    if (!text.empty()) {
        std::lock_guard lock(m_progressMutex);
        m_progressText = std::move(text);
    }
}

void ivIOControl::GetProgress(std::uint64_t* done, std::uint64_t* total) const {
    if (done) *done = m_done;
    if (total) *total = m_total;
}

std::string ivIOControl::ProgressText() const {
    std::lock_guard lock(m_progressMutex);
    return m_progressText;
}
