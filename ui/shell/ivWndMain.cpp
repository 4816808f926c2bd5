#include "ui/shell/ivWndMain.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>
#include <QWidgetAction>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivSessionTexts.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"
#include "ui/panes/ivBaseTreeFrame.h"
#include "ui/panes/ivErrorBtn.h"
#include "ui/panes/ivObjTree.h"
#include "ui/panes/ivTreeFrames.h"
#include "ui/panes/ivXREFFrame.h"
#include "ui/shell/CAboutDialog.h"
#include "ui/shell/CInfoDlg.h"
#include "ui/shell/CKeysDialog.h"
#include "ui/shell/COptionsDlg.h"
#include "ui/shell/CSaveDialog.h"
#include "ui/shell/ivCommandTarget.h"
#include "ui/shell/ivCommands.h"
#include "ui/shell/ivIcons.h"
#include "ui/shell/ivSettings.h"
#include "ui/views/ivWndDockView.h"

namespace {

ivWndMain* g_mainWindow = nullptr;  // not owned

const char* const kHomePage = "https://www.vantrel.com/";
constexpr int kLeftWidth = 300;
constexpr int kRightWidth = 200;

QString Utf8(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

ivWndMain* ivWndMain::Instance() {
    return g_mainWindow;
}

ivWndMain::ivWndMain(ivSettings& settings, ivCommands& commands, QWidget* parent)
    : QMainWindow(parent), m_settings(settings), m_commands(commands) {
    g_mainWindow = this;
    setObjectName("ivWndMain");
    setWindowTitle(kProductTitle);
    setWindowIcon(ivAppIcon());
    setAcceptDrops(true);
    BuildPanes();
    BuildStatusBar();
    BuildMenus();
    m_session.Recent().Load(m_settings.Recent());
    // The sink may be told of messages from the image export's worker thread: the button
    // follows on this thread.
    m_control.SetChangeHandler([this](ivDPFControl* withMessages) {
        const bool has = withMessages != nullptr;
        QMetaObject::invokeMethod(
            this, [this, has] { OnMessagesChanged(has); }, Qt::AutoConnection);
    });
    resize(1500, 940);
}

ivWndMain::~ivWndMain() {
    m_control.SetChangeHandler({});
    m_session.Recent().Save(m_settings.Recent());
    if (g_mainWindow == this) g_mainWindow = nullptr;
}

void ivWndMain::BuildPanes() {
    m_xref = new ivXREFFrame(this);
    m_left = {new ivTreeFrame(this), new ivPageFrame(this),
              new ivRoleFrame("Fonts", "fontFrame", kRoleFont, this),
              new ivRoleFrame("Images", "imageFrame", kRoleImage, this)};
    for (ivBaseTreeFrame* frame :
         {static_cast<ivBaseTreeFrame*>(m_xref), m_left[0], m_left[1], m_left[2], m_left[3]}) {
        ivObjTree* tree = frame->Tree();
        connect(tree, &ivObjTree::ShowRequested, this, &ivWndMain::ShowObject);
        connect(tree, &ivObjTree::LocateRequested, this, &ivWndMain::Locate);
        connect(tree, &ivObjTree::FilterRequested, this, &ivWndMain::FilterXref);
    }
    setDockNestingEnabled(false);
    setTabPosition(Qt::LeftDockWidgetArea, QTabWidget::North);
    for (ivBaseTreeFrame* frame : m_left) {
        addDockWidget(Qt::LeftDockWidgetArea, frame);
        if (frame != m_left.front()) tabifyDockWidget(m_left.front(), frame);
    }
    addDockWidget(Qt::RightDockWidgetArea, m_xref);
    // Tabs 1 to 3 come to the front when asked; 0 and any other value leave the first.
    const int tab = m_settings.ActiveTab();
    m_left[tab >= 1 && tab <= 3 ? static_cast<std::size_t>(tab) : 0]->raise();
    resizeDocks({m_left.front(), m_xref}, {kLeftWidth, kRightWidth}, Qt::Horizontal);

    m_centre = new QTabWidget(this);
    m_centre->setObjectName("centre");
    m_centre->setDocumentMode(true);
    m_centre->setTabsClosable(true);
    m_sharedView = MakeView(true);
    m_centre->addTab(m_sharedView, "View");
    // The shared view is never closed.
    m_centre->tabBar()->setTabButton(0, QTabBar::RightSide, nullptr);
    m_centre->tabBar()->setTabButton(0, QTabBar::LeftSide, nullptr);
    connect(m_centre, &QTabWidget::tabCloseRequested, this,
            [this](int index) { CloseView(m_centre->widget(index)); });
    m_centre->tabBar()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_centre->tabBar(), &QWidget::customContextMenuRequested, this, &ivWndMain::ShowTabMenu);
    setCentralWidget(m_centre);
}

void ivWndMain::BuildStatusBar() {
    for (int i = 0; i < 3; ++i) {
        auto* field = new QLabel;
        field->setObjectName(QString("statusField%1").arg(i));
        field->setVisible(false);
        m_status.push_back(field);
    }
    m_status[1]->setAlignment(Qt::AlignCenter);
    statusBar()->addWidget(m_status[0]);
    statusBar()->addWidget(m_status[1], 1);
    statusBar()->addPermanentWidget(m_status[2]);
}

void ivWndMain::BuildMenus() {
    m_commands.BuildMenuBar(menuBar());
    // Keys work whether or not their command is in a menu.
    for (QAction* action : m_commands.Actions())
        if (action && !action->shortcuts().isEmpty()) addAction(action);
    connect(&m_commands, &ivCommands::Triggered, this, &ivWndMain::OnCommand);
    connect(&m_commands, &ivCommands::DropDownOpening, this, [this](const QString& name, QMenu* menu) {
        if (name.compare("File.Recent", Qt::CaseInsensitive) == 0) FillRecent(menu);
    });
}

// ---- commands ------------------------------------------------------------------------------

void ivWndMain::OnCommand(const QString& name) {
    auto is = [&](const char* command) { return name.compare(command, Qt::CaseInsensitive) == 0; };
    const std::shared_ptr<ivPdf>& doc = m_session.Document();
    if (is("File.Open")) {
        OpenWithDialog();
    } else if (is("File.Reload")) {
        m_session.SetExtraChecks(m_settings.ExtraChecks());
        m_session.Reload();
    } else if (is("File.Close")) {
        m_session.Close();
    } else if (is("File.Warning.clear")) {
        m_control.ClearMessages();
    } else if (is("File.Properties")) {
        if (doc) CInfoDlg(*doc, this).exec();
    } else if (is("File.Exit")) {
        close();
    } else if (is("View.tree") || is("View.pages") || is("View.fonts") || is("View.images")) {
        const std::size_t i = is("View.tree") ? 0 : is("View.pages") ? 1 : is("View.fonts") ? 2 : 3;
        ActivateFrame(m_left[i], m_left[i]->Tree());
    } else if (is("View.xref")) {
        ActivateFrame(m_xref, m_xref->Tree());
    } else if (is("Edit.find")) {
        ActivateFrame(m_xref, m_xref->SearchBox());
    } else if (is("Tools.Options")) {
        COptionsDlg(m_settings, this).exec();
    } else if (is("Tools.ExportImages")) {
        if (doc) CSaveDialog(*doc, m_settings, this).exec();
    } else if (is("Help.Keys")) {
        CKeysDialog(m_commands.Table(), this).exec();
    } else if (is("Help.HomePage")) {
        QDesktopServices::openUrl(QUrl(kHomePage));
    } else if (is("Help.About")) {
        CAboutDialog(this).exec();
    } else if (!(m_tabMenuView && m_tabMenuView->OnTabCommand(name))) {
        PassToFocus(name);
    }
}

bool ivWndMain::PassToFocus(const QString& name) {
    for (QWidget* w = QApplication::focusWidget(); w; w = w->parentWidget())
        if (auto* target = dynamic_cast<ivCommandTarget*>(w); target && target->OnCommand(name)) return true;
    return false;
}

void ivWndMain::ActivateFrame(QDockWidget* frame, QWidget* focus) {
    frame->show();
    frame->raise();
    focus->setFocus(Qt::ShortcutFocusReason);
}

void ivWndMain::OpenWithDialog() {
    const QString path = QFileDialog::getOpenFileName(this, "Open", m_lastFolder, "PDF Files (*.pdf)");
    if (path.isEmpty()) return;
    m_lastFolder = QFileInfo(path).absolutePath();
    OpenDocument(path, kAddToRecent);
}

ivStatus ivWndMain::OpenDocument(const QString& path, unsigned flags) {
    m_session.SetExtraChecks(m_settings.ExtraChecks());
    return m_session.OpenDocument(path.toStdString(), flags);
}

void ivWndMain::FillRecent(QMenu* menu) {
    const auto& entries = m_session.Recent().Entries();
    if (entries.empty()) return;  // the drop-down keeps what it showed last
    menu->clear();
    for (std::size_t i = 0; i < entries.size() && i < ivRecentFiles::kCapacity; ++i) {
        QAction* item = menu->addAction(Utf8(entries[i].path));
        item->setObjectName("File.Recent.Item");
        const int id = entries[i].id;
        connect(item, &QAction::triggered, this, [this, id] {
            m_session.SetExtraChecks(m_settings.ExtraChecks());
            m_session.OpenRecent(id);
        });
    }
}

// ---- messages ------------------------------------------------------------------------------

void ivWndMain::OnMessagesChanged(bool hasMessages) {
    if (hasMessages && !m_warning) {
        m_warning = new QToolButton(this);
        m_warning->setObjectName("warning");
        if (QAction* show = m_commands.Action("File.Warning")) {
            m_warning->setIcon(show->icon());
            m_warning->setToolTip(show->text());
        }
        m_warning->setAutoRaise(true);
        m_warning->setPopupMode(QToolButton::InstantPopup);
        auto* menu = new QMenu(m_warning);
        connect(menu, &QMenu::aboutToShow, this, [this, menu] { FillWarnings(menu); });
        m_warning->setMenu(menu);
        menuBar()->setCornerWidget(m_warning, Qt::TopRightCorner);
    }
    if (m_warning) m_warning->setVisible(hasMessages);
    menuBar()->adjustSize();
}

void ivWndMain::FillWarnings(QMenu* menu) {
    menu->clear();
    auto* content = new QWidgetAction(menu);
    auto* list = new ivErrorBtn(m_control);
    // Measured once as it opens; what is unfolded later scrolls inside it.
    list->setFixedSize(list->sizeHint());
    connect(list, &ivErrorBtn::ObjectChosen, this, [this, menu](unsigned num, unsigned gen) {
        menu->close();
        ShowMessageObject(num, gen);
    });
    content->setDefaultWidget(list);
    menu->addAction(content);
    menu->addSeparator();
    if (QAction* clear = m_commands.Action("File.Warning.clear")) menu->addAction(clear);
}

// ---- the session's window ---------------------------------------------------------------------

void ivWndMain::SetTitle(const std::string& title) {
    setWindowTitle(Utf8(title));
}

void ivWndMain::SetStatus(const std::vector<std::string>& fields) {
    for (std::size_t i = 0; i < m_status.size(); ++i) {
        m_status[i]->setVisible(i < fields.size());
        m_status[i]->setText(i < fields.size() ? Utf8(fields[i]) : QString());
    }
    // Shown at once, between the steps of opening: paint without taking user input.
    statusBar()->repaint();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void ivWndMain::SetBusy(bool busy) {
    if (busy)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QApplication::restoreOverrideCursor();
}

void ivWndMain::ResetViews(const std::shared_ptr<ivPdf>& doc) {
    while (m_centre->count() > 1) {
        QWidget* view = m_centre->widget(m_centre->count() - 1);
        m_centre->removeTab(m_centre->count() - 1);
        delete view;
    }
    m_sharedView->SetDocument(doc);
    m_centre->setTabText(0, "View");
    m_centre->setTabToolTip(0, {});
}

void ivWndMain::FillPanes(const std::shared_ptr<ivPdf>& doc) {
    m_xref->SetDocument(doc);
    for (ivBaseTreeFrame* frame : m_left) frame->SetDocument(doc);
}

bool ivWndMain::AskMissingFile(const std::string& text) {
    return QMessageBox::warning(this, kProductTitle, Utf8(text),
                                QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel) == QMessageBox::Yes;
}

QStringList ivWndMain::StatusTexts() const {
    QStringList out;
    for (QLabel* field : m_status)
        if (!field->isHidden()) out << field->text();
    return out;
}

void ivWndMain::ShowObject(const pdfObject* object, unsigned flags) {
    ++m_viewRequests;
    if (!object || !m_session.Document()) return;
    if (flags & kReuseView) {
        if (ivWndDockView* view = ViewShowing(object)) {
            if (flags & kBringToFront) m_centre->setCurrentWidget(view);
            return;
        }
    }
    ivWndDockView* view = flags & kSharedView ? m_sharedView : nullptr;
    if (!view) {
        view = MakeView(false);
        view->SetDocument(m_session.Document());
        m_centre->addTab(view, "View");
    }
    view->ShowObject(object);
    const int index = m_centre->indexOf(view);
    m_centre->setTabText(index, view->Caption());
    m_centre->setTabToolTip(index, view->TabHint());
    if (flags & kBringToFront) m_centre->setCurrentWidget(view);
}

ivWndDockView* ivWndMain::ViewShowing(const pdfObject* object) const {
    for (int i = 0; i < m_centre->count(); ++i)
        if (auto* view = qobject_cast<ivWndDockView*>(m_centre->widget(i)); view && view->Object() == object)
            return view;
    return nullptr;
}

ivWndDockView* ivWndMain::MakeView(bool shared) {
    auto* view = new ivWndDockView(shared);
    connect(view, &ivWndDockView::ShowRequested, this, &ivWndMain::ShowObject);
    connect(view, &ivWndDockView::LocateRequested, this, &ivWndMain::Locate);
    connect(view, &ivWndDockView::FilterRequested, this, &ivWndMain::FilterXref);
    connect(view, &ivWndDockView::CloseRequested, this, [this, view] { CloseView(view); });
    return view;
}

void ivWndMain::CloseView(QWidget* view) {
    const int index = m_centre->indexOf(view);
    if (index < 0 || view == m_sharedView) return;
    m_centre->removeTab(index);
    view->deleteLater();
}

void ivWndMain::ShowTabMenu(const QPoint& pos) {
    auto* view = qobject_cast<ivWndDockView*>(m_centre->widget(m_centre->tabBar()->tabAt(pos)));
    std::unique_ptr<QMenu> menu(view ? view->BuildTabMenu(this) : nullptr);
    if (!menu) return;
    m_tabMenuView = view;
    menu->exec(m_centre->tabBar()->mapToGlobal(pos));
    m_tabMenuView = nullptr;
    ivWndDockView::RestoreTabMenu();
}

void ivWndMain::ShowMessageObject(unsigned num, unsigned gen) {
    const std::shared_ptr<ivPdf>& doc = m_session.Document();
    if (!doc || gen > 0xFFFF) return;
    if (const pdfObject* object = ResolveRef(*doc, {num, static_cast<std::uint16_t>(gen)}))
        ShowObject(object, kReuseView | kBringToFront | kSharedView);
}

void ivWndMain::Locate(unsigned num, unsigned gen) {
    ActivateFrame(m_xref, m_xref->Tree());
    m_xref->Locate(num, gen);
}

void ivWndMain::FilterXref(const QString& text) {
    ActivateFrame(m_xref, m_xref->Tree());
    m_xref->Filter(text);
}

// ---- window events -----------------------------------------------------------------------------

void ivWndMain::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void ivWndMain::dropEvent(QDropEvent* event) {
    if (OpenDropped(event->mimeData()->urls())) event->acceptProposedAction();
}

bool ivWndMain::OpenDropped(const QList<QUrl>& urls) {
    if (urls.isEmpty() || !urls.front().isLocalFile()) return false;
    OpenDocument(urls.front().toLocalFile(), kAddToRecent);  // the first file only
    return true;
}
