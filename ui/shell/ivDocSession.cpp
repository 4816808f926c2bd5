#include "ui/shell/ivDocSession.h"

#include <filesystem>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivSessionTexts.h"
#include "pdf/object/pdfDiagnostics.h"
#include "platform/ivFileStream.h"
#include "platform/ivFormat.h"

namespace {

std::filesystem::path FromUtf8(const std::string& path) {
    return std::filesystem::path(std::u8string(path.begin(), path.end()));
}

// The wait cursor for as long as a scope lasts.
class BusyScope {
public:
    explicit BusyScope(ivSessionView& view) : m_view(view) { m_view.SetBusy(true); }
    ~BusyScope() { m_view.SetBusy(false); }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    ivSessionView& m_view;
};

}  // namespace

ivStatus ivDocSession::OpenDocument(const std::string& path, unsigned flags) {
    std::string error;
    ivRef<ivFileStream> file = ivFileStream::Open(FromUtf8(path), &error);
    if (!file) {
        m_control.AddMessage(ivFormatOne("Can't open file %s", path));
        if (flags & kPromptIfMissing) {
            if (m_view.AskMissingFile(MissingFileText(path, flags & kOfferRemoval)) &&
                (flags & kOfferRemoval))
                m_recent.Remove(path);
        }
        m_view.SetTitle(kProductTitle);
        return kFail;
    }
    {
        BusyScope busy(m_view);
        auto doc = std::make_shared<ivPdf>(file, path, &m_control);
        doc->SetExtraChecks(m_extraChecks);
        SetDocument(std::move(doc));
    }
    m_view.SetTitle(WindowTitle(path));
    if (flags & kAddToRecent) m_recent.Add(path);
    return kOk;
}

void ivDocSession::SetDocument(std::shared_ptr<ivPdf> doc) {
    if (doc == m_doc) return;
    m_control.ClearMessages();
    m_view.ResetViews(doc);
    // The panes let go of the previous document now, so that two large ones are never held.
    m_view.FillPanes(nullptr);
    m_doc = std::move(doc);
    if (m_doc) {
        m_view.SetStatus({"Opening..."});
        m_doc->SetPasswordPrompt(m_view.PasswordPrompt());
        m_doc->Open();
        m_doc->SetPasswordPrompt(nullptr);
        m_view.SetStatus({"Analizing..."});
        m_doc->Analyse();
        m_view.SetStatus({VersionText(m_doc->VersionMajor(), m_doc->VersionMinor()),
                          FileSizeText(m_doc->FileSize()), PageCountText(m_doc->Pages().size())});
    } else {
        m_view.SetStatus({});
    }
    m_view.FillPanes(m_doc);
}

void ivDocSession::Reload() {
    if (!m_doc || m_doc->FileName().empty()) return;
    const std::string path = m_doc->FileName();
    OpenDocument(path, kAddToRecent | kOfferRemoval | kPromptIfMissing);
}

void ivDocSession::Close() {
    SetDocument(nullptr);
    m_view.SetTitle(kProductTitle);
}

void ivDocSession::OpenRecent(int id) {
    const ivRecentFiles::Entry* entry = m_recent.FindById(id);
    if (!entry) return;
    const std::string path = entry->path;
    OpenDocument(path, kAddToRecent | kOfferRemoval | kPromptIfMissing);
}
