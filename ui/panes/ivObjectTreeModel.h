#pragma once
#include <QAbstractItemModel>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "pdf/analysis/ivXrefFilter.h"

class ivPdf;
struct XrefEntry;
struct XrefSection;
struct pdfObject;
struct pdfStream;

// The trees of the navigation panes, one model for all of them: the catalog (Document Tree),
// the page list (Pages), a list of entries (Fonts, Images) or the cross-reference sections
// (XREF table). Rows that stand for pages or entries are not objects of their own: their
// index says which row of which list they are, so a section of a million entries costs
// nothing until a row is unfolded. Unfolded rows and object items below them are nodes made
// when first counted, which the view does when it unfolds them. Texts, icons and hints come
// from the core.
class ivObjectTreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum class Kind : std::uint8_t { Section, Trailer, XrefStream, Entry, Object, StreamData, Page, Catalog };
    // Extra data roles.
    enum Role { KindRole = Qt::UserRole + 1, UnresolvedRole, IconIndexRole };

    explicit ivObjectTreeModel(QObject* parent = nullptr);
    ~ivObjectTreeModel() override;

    void Clear();
    const std::shared_ptr<ivPdf>& Document() const { return m_doc; }
    void ShowCatalog(std::shared_ptr<ivPdf> doc);
    void ShowPages(std::shared_ptr<ivPdf> doc);
    void ShowEntries(std::shared_ptr<ivPdf> doc, std::vector<XrefEntry*> entries);
    void ShowSections(std::shared_ptr<ivPdf> doc);
    // The cross-reference view's filter; none shows every entry.
    void SetFilter(std::optional<ivXrefFilter> filter);
    bool Filtered() const { return m_filter.has_value(); }
    // Entries shown under the filter, and in all.
    std::size_t MatchCount() const { return m_matches.count; }
    std::size_t EntryTotal() const;

    // What an item stands for.
    Kind KindOf(const QModelIndex& index) const;
    XrefEntry* EntryOf(const QModelIndex& index) const;
    // The item's own value: an object item's value, a page's dictionary, an entry's object;
    // for a stream data item its stream.
    const pdfObject* ValueOf(const QModelIndex& index) const;
    // What choosing the item shows: its value with references resolved; null when nothing.
    const pdfObject* ObjectToShow(const QModelIndex& index) const;
    QString TextOf(const QModelIndex& index) const;
    QString HintOf(const QModelIndex& index) const;
    // The row of `entry` in section `section`'s list (unfiltered), as an index; invalid when
    // the section does not hold it.
    QModelIndex IndexOfEntry(std::size_t section, const XrefEntry* entry) const;
    QModelIndex IndexOfSection(std::size_t section) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    struct Node;
    enum class Mode { Empty, Catalog, Pages, Entries, Sections };

    // What an index stands for, read without making a node for a list row.
    struct Item {
        Kind kind = Kind::Object;
        XrefEntry* entry = nullptr;
        std::size_t page = 0;
        Node* node = nullptr;  // null for a list row
    };

    void Reset(Mode mode, std::shared_ptr<ivPdf> doc);
    Item ItemOf(const QModelIndex& index) const;
    // The node of an index, made for a list row the first time (to hold its children).
    Node* NodeOf(const QModelIndex& index) const;
    // The node of a list row, made the first time it is needed.
    Node* Materialize(std::uint32_t group, std::uint32_t row) const;
    std::uint32_t ListSize(std::uint32_t group) const;
    XrefEntry* ListEntry(std::uint32_t group, std::uint32_t row) const;
    QModelIndex IndexOfNode(const Node* node) const;
    void MakeChildren(Node& node) const;
    std::size_t ChildCount(Node& node) const;
    void AddObjectChildren(Node& node, const pdfObject* value) const;
    void AddObjectItem(Node& node, const std::string& prefix, const pdfObject* value) const;
    bool Searched(const Node& node) const;
    bool Contains(const pdfObject* value, int depth, std::vector<const pdfObject*>& path) const;
    QVariant Icon(const QModelIndex& index) const;

    Mode m_mode = Mode::Empty;
    std::shared_ptr<ivPdf> m_doc;
    std::vector<std::unique_ptr<Node>> m_top;  // top-level nodes: the catalog or the sections
    std::vector<XrefEntry*> m_entries;         // Entries mode
    std::optional<ivXrefFilter> m_filter;
    ivXrefMatches m_matches;
    std::vector<std::vector<bool>> m_expandable;  // per section, per entry: whether it unfolds
    // Nodes of list rows that were unfolded or asked for, by (group, row).
    mutable std::unordered_map<std::uint64_t, std::unique_ptr<Node>> m_rowNodes;
};
