#pragma once
#include <memory>
#include <string>
#include <vector>

#include "platform/ivStatus.h"
#include "ui/shell/ivRecentFiles.h"

class ivDPFControl;
class ivPasswordPrompt;
class ivPdf;

// What the session asks of the window that shows it.
class ivSessionView {
public:
    virtual ~ivSessionView() = default;
    virtual void SetTitle(const std::string& title) = 0;
    // The status bar's fields (none, one or three), shown at once.
    virtual void SetStatus(const std::vector<std::string>& fields) = 0;
    // The wait cursor on or off.
    virtual void SetBusy(bool busy) = 0;
    // Empties the shared view, closes every other view and binds the views to `doc`.
    virtual void ResetViews(const std::shared_ptr<ivPdf>& doc) = 0;
    // Hands the analysed document (or none) to the panes.
    virtual void FillPanes(const std::shared_ptr<ivPdf>& doc) = 0;
    // The prompt for a file that cannot be opened; true when the user answers Yes.
    virtual bool AskMissingFile(const std::string& text) = 0;
    virtual ivPasswordPrompt* PasswordPrompt() = 0;
};

// Open flags.
constexpr unsigned kAddToRecent = 1;
constexpr unsigned kOfferRemoval = 2;
constexpr unsigned kPromptIfMissing = 4;

// The document session of the main window: opens a file, analyses it, installs it as the
// current document and keeps the title, the status bar and the recent-files list up to
// date. One document at a time; its messages go to the window's sink.
class ivDocSession {
public:
    ivDocSession(ivSessionView& view, ivDPFControl& control) : m_view(view), m_control(control) {}

    // Opens `path` (UTF-8) and installs it; the status of opening the file. A file that cannot
    // be opened leaves the current document as it is, under the bare product title.
    ivStatus OpenDocument(const std::string& path, unsigned flags);
    // Installs a document that was made but not opened: opens and analyses it, then fills the
    // panes. Null closes the current one.
    void SetDocument(std::shared_ptr<ivPdf> doc);
    // File.Reload: the current file again, made anew.
    void Reload();
    // File.Close.
    void Close();
    // A recent-files menu item by the identifier of its entry; nothing when none has it.
    void OpenRecent(int id);

    const std::shared_ptr<ivPdf>& Document() const { return m_doc; }
    ivRecentFiles& Recent() { return m_recent; }
    // Whether documents opened from now on add our own checks to their messages.
    void SetExtraChecks(bool on) { m_extraChecks = on; }

private:
    ivSessionView& m_view;
    ivDPFControl& m_control;  // the window's message sink; outlives the session
    std::shared_ptr<ivPdf> m_doc;
    ivRecentFiles m_recent;
    bool m_extraChecks = false;
};
