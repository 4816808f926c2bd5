#pragma once
#include <QWidget>
#include <memory>

class QLabel;
class ivPdf;
struct pdfObject;

// A view of one object, a tab of the centre group. The first view, "View", is shared: it
// shows whatever was chosen last and lives as long as the window.
class ivWndDockView : public QWidget {
    Q_OBJECT
public:
    explicit ivWndDockView(QWidget* parent = nullptr);

    // Binds the view to a document (or none) and empties it.
    void SetDocument(std::shared_ptr<ivPdf> doc);
    // Shows `object` of the bound document; null empties the view.
    void ShowObject(const pdfObject* object);
    const pdfObject* Object() const { return m_object; }
    // The caption of the view's tab: "View" when empty, else the object's identifier.
    QString Caption() const;

private:
    std::shared_ptr<ivPdf> m_doc;
    const pdfObject* m_object = nullptr;  // not owned; lives in m_doc
    QLabel* m_text;
};
