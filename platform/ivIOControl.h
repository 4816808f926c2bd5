#pragma once
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/ivFormat.h"

class ivScope;

// One node of the message tree: a scope that received messages, or a message (a leaf).
struct ivMessageNode {
    std::string text;
    bool isScope = false;
    bool namesObject = false;  // a scope about one indirect object: which one
    std::uint32_t objectNum = 0, objectGen = 0;
    std::vector<std::unique_ptr<ivMessageNode>> children;
};

// The I/O control that readers report to: the scope stack, the message tree, progress and
// stop requests. Messages and scopes are used by one thread; progress may be read from another.
class ivIOControl {
public:
    ivIOControl() { m_root.isScope = true; }
    virtual ~ivIOControl();
    ivIOControl(const ivIOControl&) = delete;
    ivIOControl& operator=(const ivIOControl&) = delete;

    // Formats (cut at 260 characters) and files the message under the open scopes.
    void Message(const char* format, ...) IV_PRINTF(2, 3);
    // Files an already formatted text as it is.
    void AddMessage(std::string text);
    void ClearMessages();
    std::size_t MessageCount() const { return m_count; }
    // The root's children are the outermost scope nodes and any message given outside a scope.
    const ivMessageNode& Messages() const { return m_root; }

    void SetProgress(std::uint64_t done, std::uint64_t total, std::string text = {});
    void GetProgress(std::uint64_t* done, std::uint64_t* total) const;
    std::string ProgressText() const;
    // The stop procedure is asked by long loops whether the user wants them to stop.
    void SetStopProc(std::function<bool()> proc) { m_stopProc = std::move(proc); }
    void Interrupt(std::uint32_t reason) { m_interrupt = reason ? reason : 1; }
    void Resume() { m_interrupt = 0; }
    bool StopRequested() const { return m_interrupt != 0 || (m_stopProc && m_stopProc()); }

protected:
    // Called after the message count changed (a message was added, or all were cleared).
    virtual void OnMessagesChanged(bool /*hasMessages*/) {}

private:
    friend class ivScope;
    void Push(ivScope* scope) { m_scopes.push_back(scope); }
    void Pop(ivScope* scope);
    ivMessageNode* NodeForOpenScopes();

    std::vector<ivScope*> m_scopes;
    ivMessageNode m_root;
    std::size_t m_count = 0;

    std::atomic<std::uint64_t> m_done{0}, m_total{0};
    mutable std::mutex m_progressMutex;
    std::string m_progressText;
    std::function<bool()> m_stopProc;
    std::atomic<std::uint32_t> m_interrupt{0};
};
