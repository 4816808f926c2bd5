#pragma once
#include <QMainWindow>
#include <memory>

#include "pdf/object/pdfDiagnostics.h"
#include "ui/shell/CPassDialog.h"
#include "ui/shell/ivDocSession.h"
#include "ui/shell/ivShowFlags.h"

class QLabel;
class QMenu;
class QTabWidget;
class QToolButton;
class QUrl;
class ivBaseTreeFrame;
class ivCommands;
class ivSettings;
class ivWndDockView;
class ivXREFFrame;
struct pdfObject;

// The main window: the menu bar from the command table with the warning button at its right,
// the navigation panes (Document Tree, Pages, Fonts, Images on the left, the XREF table on
// the right), the views in the centre, the status bar, and the document session.
class ivWndMain : public QMainWindow, private ivSessionView {
    Q_OBJECT
public:
    ivWndMain(ivSettings& settings, ivCommands& commands, QWidget* parent = nullptr);
    ~ivWndMain() override;

    // The one main window, while it exists.
    static ivWndMain* Instance();

    ivDocSession& Session() { return m_session; }
    ivStatus OpenDocument(const QString& path, unsigned flags);
    // Shows an object of the current document in a view of the centre group.
    void ShowObject(const pdfObject* object, unsigned flags);
    // Files dropped on the window: the first one is opened.
    bool OpenDropped(const QList<QUrl>& urls);
    // Handles a command of the table; others go to the focused widget.
    void OnCommand(const QString& name);

    ivDPFControl& Control() { return m_control; }
    ivXREFFrame* XrefFrame() const { return m_xref; }
    const std::vector<ivBaseTreeFrame*>& LeftFrames() const { return m_left; }
    QTabWidget* Centre() const { return m_centre; }
    ivWndDockView* SharedView() const { return m_sharedView; }
    // The warning button; null until the first message.
    QToolButton* WarningButton() const { return m_warning; }
    // The texts of the status bar's shown fields.
    QStringList StatusTexts() const;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // ivSessionView
    void SetTitle(const std::string& title) override;
    void SetStatus(const std::vector<std::string>& fields) override;
    void SetBusy(bool busy) override;
    void ResetViews(const std::shared_ptr<ivPdf>& doc) override;
    void FillPanes(const std::shared_ptr<ivPdf>& doc) override;
    bool AskMissingFile(const std::string& text) override;
    ivPasswordPrompt* PasswordPrompt() override { return &m_prompt; }

    void BuildPanes();
    void BuildStatusBar();
    void BuildMenus();
    void ActivateFrame(QDockWidget* frame, QWidget* focus);
    void OnMessagesChanged(bool hasMessages);
    void FillRecent(QMenu* menu);
    void FillWarnings(QMenu* menu);
    void OpenWithDialog();
    bool PassToFocus(const QString& name);
    ivWndDockView* MakeView(bool shared);
    ivWndDockView* ViewShowing(const pdfObject* object) const;
    void CloseView(QWidget* view);
    void ShowTabMenu(const QPoint& pos);
    void Locate(unsigned num, unsigned gen);
    // The object a message's scope names, chosen in the warning drop-down.
    void ShowMessageObject(unsigned num, unsigned gen);
    void FilterXref(const QString& text);

    ivSettings& m_settings;
    ivCommands& m_commands;
    ivDPFControl m_control;  // the message sink of every document this window opens
    ivDialogPasswordPrompt m_prompt{this};
    ivDocSession m_session{*this, m_control};
    ivXREFFrame* m_xref = nullptr;
    std::vector<ivBaseTreeFrame*> m_left;  // Document Tree, Pages, Fonts, Images
    QTabWidget* m_centre = nullptr;
    ivWndDockView* m_sharedView = nullptr;
    ivWndDockView* m_tabMenuView = nullptr;  // the view whose tab menu is open
    std::vector<QLabel*> m_status;
    QToolButton* m_warning = nullptr;
    QString m_lastFolder;  // where the File Open dialog starts
    int m_viewRequests = 0;
};
