#include "ui/views/ivWndDockView.h"

#include <QAction>
#include <QActionGroup>
#include <QLabel>
#include <QMenu>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "pdf/analysis/ivObjectSave.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivXrefItems.h"
#include "pdf/analysis/pdfImage.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivImage2d.h"
#include "platform/ivMemStream.h"
#include "ui/panes/ivObjectActions.h"
#include "ui/shell/ivCommands.h"
#include "ui/views/ivWndHEXViewer.h"
#include "ui/views/ivWndImageViewer.h"
#include "ui/views/ivWndViewer.h"

namespace {

constexpr int kMinTextHeight = 32, kMaxTextHeight = 320;

QString Utf8(const std::string& s) {
    return QString::fromStdString(s);
}

// The modes the drop-down offers, in its order.
constexpr ivViewMode kOfferedModes[] = {ivViewMode::Hex, ivViewMode::Image, ivViewMode::ObjectStream,
                                        ivViewMode::Content, ivViewMode::Raw};

// The drop-down text of a mode: the command table's, or the built-in one without a table.
QString ModeText(ivViewMode mode) {
    if (ivCommands* commands = ivCommands::Instance())
        if (QAction* action = commands->Action(ViewModeCommand(mode))) return action->text();
    const std::string_view text = ViewModeText(mode);
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QIcon CommandIcon(std::string_view name) {
    ivCommands* commands = ivCommands::Instance();
    QAction* action = commands ? commands->Action(name) : nullptr;
    return action ? action->icon() : QIcon();
}

}  // namespace

ivWndDockView::ivWndDockView(bool shared, QWidget* parent)
    : QWidget(parent),
      m_shared(shared),
      m_splitter(new QSplitter(Qt::Vertical, this)),
      m_objectViewer(MakeTextView()) {
    setObjectName("ivWndDockView");
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(m_objectViewer);
    BuildModePart();
    m_splitter->addWidget(m_modePart);
    m_splitter->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_splitter);
    m_modePart->hide();
    HideModePart();
}

ivWndDockView::~ivWndDockView() = default;

ivWndViewer* ivWndDockView::MakeTextView() {
    auto* viewer = new ivWndViewer;
    connect(viewer, &ivWndViewer::ShowRequested, this, &ivWndDockView::ShowRequested);
    connect(viewer, &ivWndViewer::LocateRequested, this, &ivWndDockView::LocateRequested);
    return viewer;
}

void ivWndDockView::BuildModePart() {
    m_modePart = new QWidget;
    m_modePart->setObjectName("modePart");
    m_toolbar = new QToolBar(m_modePart);
    m_toolbar->setObjectName("ivFrameToolbar");
    m_toolbar->setIconSize(QSize(16, 16));
    m_modeButton = new QToolButton(m_toolbar);
    m_modeButton->setObjectName("View.Mode");
    m_modeButton->setPopupMode(QToolButton::InstantPopup);
    m_modeButton->setToolTip("View mode");
    auto* menu = new QMenu(m_modeButton);
    m_modeActions = new QActionGroup(this);
    for (ivViewMode mode : kOfferedModes) {
        QAction* action = menu->addAction(ModeText(mode));
        action->setObjectName(QString::fromUtf8(ViewModeCommand(mode)));
        action->setCheckable(true);
        action->setData(static_cast<int>(mode));
        m_modeActions->addAction(action);
        connect(action, &QAction::triggered, this,
                [this, mode] { OnCommand(QString::fromUtf8(ViewModeCommand(mode))); });
    }
    m_modeButton->setMenu(menu);
    m_toolbar->addWidget(m_modeButton);
    m_info = new QLabel(m_toolbar);
    m_info->setObjectName("info");
    m_info->setContentsMargins(8, 0, 8, 0);
    m_info->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_toolbar->addWidget(m_info);
    m_zoomIn = m_toolbar->addAction(CommandIcon("zoom.in"), "Zoom In");
    m_zoomOut = m_toolbar->addAction(CommandIcon("zoom.out"), "Zoom Out");
    m_zoomIn->setObjectName("zoom.in");
    m_zoomOut->setObjectName("zoom.out");
    for (QAction* zoom : {m_zoomIn, m_zoomOut})
        connect(zoom, &QAction::triggered, this, [this, zoom] {
            if (auto* image = qobject_cast<ivWndImageViewer*>(m_modeView))
                image->OnCommand(zoom->objectName());
        });
    auto* layout = new QVBoxLayout(m_modePart);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_toolbar);
}

void ivWndDockView::SetDocument(std::shared_ptr<ivPdf> doc) {
    m_doc = std::move(doc);
    Clear();
}

void ivWndDockView::Clear() {
    HideModePart();
    m_object = nullptr;
    m_objectViewer->Clear();
}

QString ivWndDockView::Caption() const {
    return m_doc ? Utf8(ViewCaption(*m_doc, m_object)) : QString("View");
}

QString ivWndDockView::TabHint() const {
    return m_doc && m_object ? Utf8(ViewTabHint(*m_doc, m_object)) : QString();
}

std::uint8_t ivWndDockView::EntryRole() const {
    const XrefEntry* entry = m_doc && m_object ? FindEntryByRecord(*m_doc, m_object) : nullptr;
    return entry ? entry->role : 0;
}

void ivWndDockView::ShowObject(const pdfObject* object) {
    m_object = m_doc ? object : nullptr;
    if (!m_object) {
        Clear();
        return;
    }
    m_objectViewer->SetText(m_doc, ObjectViewText(m_object), HelpRoleOf(m_object, EntryRole()));
    m_pageOps.reset();
    const XrefEntry* entry = FindEntryByRecord(*m_doc, m_object);
    std::shared_ptr<const pdfContentOps> ops;
    if (AsStream(m_object) && entry) {
        ShowModePart(true);
        m_mode = ivViewMode::None;
        SetMode(InitialViewMode(entry->role));
    } else if (TypeNameOf(m_object) == "Page" && !AsStream(m_object) &&
               Succeeded(ReadPageContents(*m_doc, m_object, ops)) && ops) {
        m_pageOps = std::move(ops);  // read once: reading again would report its messages again
        ShowModePart(false);
        m_mode = ivViewMode::None;
        SetMode(ivViewMode::Content);
    } else {
        HideModePart();
    }
}

bool ivWndDockView::ModePartShown() const {
    return !m_modePart->isHidden();
}

bool ivWndDockView::ModeDropDownEnabled() const {
    return m_modeButton->isEnabled();
}

QString ivWndDockView::InfoText() const {
    return m_info->text();
}

bool ivWndDockView::ZoomButtonsShown() const {
    return ModePartShown() && m_zoomIn->isVisible();
}

int ivWndDockView::SplitterPosition() const {
    // A splitter that has not been laid out yet holds no position of its own.
    if (!ModePartShown() || !m_splitter->isVisible()) return m_splitterPosition;
    const int shown = m_splitter->sizes().value(0);
    return shown >= kMinTextHeight ? shown : m_splitterPosition;
}

void ivWndDockView::SetSplitterPosition(int position) {
    m_splitterPosition = std::clamp(position, kMinTextHeight, kMaxTextHeight);
    if (ModePartShown())
        m_splitter->setSizes({m_splitterPosition, std::max(1, height() - m_splitterPosition)});
}

void ivWndDockView::ShowModePart(bool enableDropDown) {
    m_modeButton->setEnabled(enableDropDown);
    SetInfo({});
    if (ModePartShown()) return;
    m_objectViewer->setMinimumHeight(kMinTextHeight);
    m_objectViewer->setMaximumHeight(kMaxTextHeight);
    m_modePart->show();
    m_splitter->refresh();  // take the shown part in now, so the position set next holds
    SetSplitterPosition(m_splitterPosition);
}

void ivWndDockView::HideModePart() {
    if (ModePartShown()) m_splitterPosition = SplitterPosition();
    ReplaceModeView(nullptr);
    m_modePart->hide();
    m_objectViewer->setMinimumHeight(0);
    m_objectViewer->setMaximumHeight(QWIDGETSIZE_MAX);
    m_mode = ivViewMode::None;
    m_pageOps.reset();
    SetInfo({});
}

void ivWndDockView::ReplaceModeView(QWidget* view) {
    delete m_modeView;
    m_modeView = view;
    if (view) m_modePart->layout()->addWidget(view);
}

void ivWndDockView::SetInfo(const QString& text) {
    m_info->setText(text);
}

void ivWndDockView::CheckModeItem() {
    for (QAction* action : m_modeActions->actions()) {
        const bool current = action->data().toInt() == static_cast<int>(m_mode);
        action->setChecked(current);
        if (current) m_modeButton->setText(action->text());
    }
    if (ivCommands* commands = ivCommands::Instance())
        if (QAction* shared = commands->Action(ViewModeCommand(m_mode)); shared && shared->isCheckable())
            shared->setChecked(true);
}

void ivWndDockView::SetMode(ivViewMode mode) {
    if (mode == m_mode) return;
    m_mode = mode;
    QWidget* view = nullptr;
    switch (mode) {
        case ivViewMode::Image:
            view = new ivWndImageViewer;
            break;
        case ivViewMode::Hex:
        case ivViewMode::Raw:
            view = new ivWndHEXViewer;
            break;
        case ivViewMode::None:
            break;
        default:
            view = MakeTextView();
            break;
    }
    m_zoomIn->setVisible(mode == ivViewMode::Image);
    m_zoomOut->setVisible(mode == ivViewMode::Image);
    SetInfo({});
    CheckModeItem();
    ReplaceModeView(view);
    Reload();
}

const pdfObject* ivWndDockView::ModeObject() const {
    if (const pdfRef* ref = AsRef(m_object)) return ResolveRef(*m_doc, ref->Id());
    return m_object;
}

void ivWndDockView::Reload() {
    if (!m_doc || !m_object || !m_modeView) return;
    switch (m_mode) {
        case ivViewMode::Object:
            static_cast<ivWndViewer*>(m_modeView)->SetText(m_doc, ObjectViewText(m_object), EntryRole());
            break;
        case ivViewMode::Content:
            LoadContent();
            break;
        case ivViewMode::ObjectStream:
            LoadObjectStream();
            break;
        case ivViewMode::Image:
            LoadImage();
            break;
        case ivViewMode::Hex:
            LoadHex();
            break;
        case ivViewMode::Raw:
            LoadRaw();
            break;
        case ivViewMode::None:
            break;
    }
}

void ivWndDockView::LoadContent() {
    auto* viewer = static_cast<ivWndViewer*>(m_modeView);
    if (m_pageOps) {
        viewer->SetText(m_doc, ContentViewText(*m_pageOps), kRolePageStream);
        return;
    }
    std::shared_ptr<const pdfContentOps> ops;
    const pdfObject* stream = ModeObject();
    if (!AsStream(stream)) {
        Report(*m_doc, "Not a stream");
        viewer->Clear();
        return;
    }
    if (Succeeded(ReadContentStream(*m_doc, stream, ops)) && ops)
        viewer->SetText(m_doc, ContentViewText(*ops), EntryRole());
    else
        viewer->Clear();
}

void ivWndDockView::LoadObjectStream() {
    auto* viewer = static_cast<ivWndViewer*>(m_modeView);
    if (const pdfStream* stream = AsStream(ModeObject()))
        viewer->SetText(m_doc, ObjectStreamViewText(*m_doc, *stream), kRoleObjectStream);
    else
        viewer->Clear();
}

void ivWndDockView::LoadImage() {
    auto* viewer = static_cast<ivWndImageViewer*>(m_modeView);
    const pdfObject* stream = ModeObject();
    if (!AsStream(stream)) {
        Report(*m_doc, "Not a stream");
        viewer->SetImage(nullptr);
        return;
    }
    std::unique_ptr<ivImage2d> image;
    if (Failed(DecodeImage(*m_doc, stream, image, nullptr)) || !image) {
        viewer->SetImage(nullptr);
        return;
    }
    SetInfo(Utf8(ImageInfoText(*image, stream)));
    viewer->SetImage(std::move(image), Caption().replace(' ', '_'));
}

void ivWndDockView::LoadHex() {
    ivMemStream bytes;
    const bool complete = Succeeded(CopyDecodedStream(*m_doc, ModeObject(), bytes));
    const std::uint64_t size = bytes.Size();
    static_cast<ivWndHEXViewer*>(m_modeView)->SetBytes(std::move(bytes.Data()));
    SetInfo(Utf8(StreamLengthText(size)) + (complete ? QString() : QString(", decoding failed")));
}

void ivWndDockView::LoadRaw() {
    const XrefEntry* entry = FindEntryByRecord(*m_doc, m_object);
    ivMemStream bytes;
    if (entry) CopyEntryBytes(*m_doc, *entry, bytes);
    const std::uint64_t size = bytes.Size();
    static_cast<ivWndHEXViewer*>(m_modeView)->SetBytes(std::move(bytes.Data()));
    SetInfo(entry ? Utf8(RawBytesText(*entry, size)) : QString());
}

bool ivWndDockView::OnCommand(const QString& name) {
    // Zoom commands go to the image, wherever the focus is in the view.
    if (name.startsWith("zoom.", Qt::CaseInsensitive))
        if (auto* image = qobject_cast<ivWndImageViewer*>(m_modeView)) return image->OnCommand(name);
    const std::optional<ivViewMode> mode = ViewModeOfCommand(name.toStdString());
    if (!mode) return false;
    if (!m_doc || !m_object || m_pageOps) return true;  // a page shows its contents only
    if (*mode == ivViewMode::Raw && !FindEntryByRecord(*m_doc, m_object)) return true;
    if (!ModePartShown()) {
        if (*mode != ivViewMode::Raw) return true;
        ShowModePart(true);
    }
    SetMode(*mode);
    return true;
}

QMenu* ivWndDockView::BuildTabMenu(QWidget* parent) {
    ivCommands* commands = ivCommands::Instance();
    if (!commands || !m_doc || !m_object) return nullptr;
    QMenu* menu = commands->BuildMenu("Context.Tab", parent);
    if (!menu) return nullptr;
    const ivObjectMenu trim = ObjectMenuFor(*m_doc, m_object);
    TrimObjectMenu(*menu, *commands, trim);
    if (!Closable()) menu->removeAction(commands->Action("edit.close"));
    if (!trim.entry || m_pageOps) menu->removeAction(commands->Action("View.RAW"));
    return menu;
}

void ivWndDockView::RestoreTabMenu() {
    if (ivCommands* commands = ivCommands::Instance()) RestoreObjectMenu(*commands);
}

bool ivWndDockView::OnTabCommand(const QString& name) {
    auto is = [&](const char* command) { return name.compare(command, Qt::CaseInsensitive) == 0; };
    if (!m_doc || !m_object) return false;
    const ivObjectMenu target = ObjectMenuFor(*m_doc, m_object);
    if (is("edit.close")) {
        if (Closable()) Q_EMIT CloseRequested();
    } else if (is("File.SaveToFile")) {
        if (target.entry) SaveEntryWithDialog(this, *m_doc, *target.entry);
    } else if (is("File.SaveStreamToFile")) {
        SaveStreamWithDialog(this, *m_doc, m_object);
    } else if (is("File.SaveImageToFile")) {
        SaveObjectImageWithDialog(this, *m_doc, m_object);
    } else if (is("Object.Locate")) {
        if (target.entry) Q_EMIT LocateRequested(target.entry->num, target.entry->gen);
    } else if (is("Object.LinkTo") || is("Object.LinkFrom")) {
        if (target.entry) Q_EMIT FilterRequested(LinkFilterText(is("Object.LinkTo"), *target.entry));
    } else {
        return OnCommand(name);
    }
    return true;
}
