#pragma once
#include <QWidget>
#include <memory>

#include "pdf/analysis/ivViewerTexts.h"
#include "pdf/analysis/pdfContents.h"
#include "ui/shell/ivCommandTarget.h"

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QSplitter;
class QToolBar;
class QToolButton;
class ivPdf;
class ivWndHEXViewer;
class ivWndImageViewer;
class ivWndViewer;
struct pdfObject;

// A view of one object, a tab of the centre group: the object's text above and, for a stream
// or a page, a mode part below a splitter with a toolbar: the mode drop-down (HEX, Image,
// Stream Of Objects, Contents, Raw bytes in file), an information text and, for images, zoom
// buttons. The first view is shared: it shows whatever was chosen last.
class ivWndDockView : public QWidget, public ivCommandTarget {
    Q_OBJECT
public:
    explicit ivWndDockView(bool shared, QWidget* parent = nullptr);
    ~ivWndDockView() override;

    // Binds the view to a document (or none) and empties it.
    void SetDocument(std::shared_ptr<ivPdf> doc);
    // Shows `object` of the bound document, choosing the mode part by what it is.
    void ShowObject(const pdfObject* object);
    // Hides the mode part and empties the text.
    void Clear();
    // Switches the mode part to another mode and fills it.
    void SetMode(ivViewMode mode);
    void Reload();

    const pdfObject* Object() const { return m_object; }
    const std::shared_ptr<ivPdf>& Document() const { return m_doc; }
    bool Shared() const { return m_shared; }
    bool Closable() const { return !m_shared; }
    // "%d %d R", or "View" for a direct object or none.
    QString Caption() const;
    QString TabHint() const;

    ivViewMode Mode() const { return m_mode; }
    bool ModePartShown() const;
    bool ModeDropDownEnabled() const;
    QString InfoText() const;
    bool ZoomButtonsShown() const;
    // The height of the object's text above the mode part.
    int SplitterPosition() const;
    void SetSplitterPosition(int position);
    ivWndViewer* ObjectViewer() const { return m_objectViewer; }
    QWidget* ModeView() const { return m_modeView; }

    bool OnCommand(const QString& name) override;

    // The tab's context menu, trimmed to what applies to the object; null without one. Call
    // RestoreTabMenu when it has closed.
    QMenu* BuildTabMenu(QWidget* parent);
    static void RestoreTabMenu();
    // A command chosen from the tab's menu, on this view's object.
    bool OnTabCommand(const QString& name);

Q_SIGNALS:
    void ShowRequested(const pdfObject* object, unsigned flags);
    void LocateRequested(unsigned num, unsigned gen);
    void FilterRequested(const QString& text);
    void CloseRequested();

private:
    void BuildModePart();
    void ShowModePart(bool enableDropDown);
    void HideModePart();
    void ReplaceModeView(QWidget* view);
    void SetInfo(const QString& text);
    void CheckModeItem();
    ivWndViewer* MakeTextView();
    const pdfObject* ModeObject() const;
    std::uint8_t EntryRole() const;
    void LoadContent();
    void LoadObjectStream();
    void LoadImage();
    void LoadHex();
    void LoadRaw();

    std::shared_ptr<ivPdf> m_doc;
    const pdfObject* m_object = nullptr;  // not owned; lives in m_doc
    bool m_shared;
    // A page dictionary's contents, while the view shows them (a page shows nothing else).
    std::shared_ptr<const pdfContentOps> m_pageOps;
    ivViewMode m_mode = ivViewMode::None;
    int m_splitterPosition = 160;

    QSplitter* m_splitter;
    ivWndViewer* m_objectViewer;
    QWidget* m_modePart = nullptr;
    QToolBar* m_toolbar = nullptr;
    QToolButton* m_modeButton = nullptr;
    QActionGroup* m_modeActions = nullptr;
    QLabel* m_info = nullptr;
    QAction* m_zoomIn = nullptr;
    QAction* m_zoomOut = nullptr;
    QWidget* m_modeView = nullptr;
};
