#include "ui/panes/ivObjectTreeModel.h"

#include <QIcon>
#include <QPainter>
#include <algorithm>

#include "pdf/analysis/ivObjectItems.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivXrefItems.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivFormat.h"
#include "ui/shell/ivIcons.h"

// Indexes: a node's index carries the node (aligned, so its low bits are 0); the index of a
// row of a list (a page, an entry) carries (group << 34 | row << 2 | 1), group 0 being the
// top-level list and group s + 1 the entries of section s.

namespace {

constexpr std::uint64_t kListTag = 1;
constexpr int kLongestChain = 64;
constexpr int kSearchDepth = 16;  // how deep a filtered dictionary is searched for a match

std::uint64_t ListId(std::uint32_t group, std::uint32_t row) {
    return (std::uint64_t(group) << 34) | (std::uint64_t(row) << 2) | kListTag;
}

bool IsListId(quintptr id) {
    return (id & kListTag) != 0;
}

std::uint32_t GroupOf(quintptr id) {
    return static_cast<std::uint32_t>(std::uint64_t(id) >> 34);
}

std::uint32_t RowOf(quintptr id) {
    return static_cast<std::uint32_t>((std::uint64_t(id) >> 2) & 0xFFFFFFFFu);
}

QString Utf8(const std::string& text) {
    return QString::fromStdString(text);
}

// An icon of the strip with, when asked, the unresolved mark drawn over it.
QIcon TreeIcon(int index, bool unresolved) {
    if (!unresolved) return ivIcon("treeIcons", index);
    static QHash<int, QIcon> marked;
    auto found = marked.find(index);
    if (found != marked.end()) return *found;
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    ivIcon("treeIcons", index).paint(&painter, pixmap.rect());
    ivIcon("treeIcons", kIconUnresolved).paint(&painter, pixmap.rect());
    painter.end();
    return *marked.insert(index, QIcon(pixmap));
}

}  // namespace

struct ivObjectTreeModel::Node {
    Kind kind = Kind::Object;
    Node* parent = nullptr;  // null at the top level and for the node of a list row
    int row = 0;             // among the parent's children (top-level nodes: their row)
    bool listRow = false;    // the node of a list row: its index is the list id
    std::uint32_t group = 0, listIndex = 0;
    std::uint32_t section = 0;         // Section, Trailer, XrefStream
    XrefEntry* entry = nullptr;        // Entry
    const pdfObject* value = nullptr;  // Object, Catalog, XrefStream; the page's dictionary
    std::size_t page = 0;              // Page: its index in the page list
    std::string text;
    int icon = kIconOther;
    bool unresolved = false;
    bool fetched = false;
    std::vector<std::unique_ptr<Node>> children;
};

ivObjectTreeModel::ivObjectTreeModel(QObject* parent) : QAbstractItemModel(parent) {}

ivObjectTreeModel::~ivObjectTreeModel() = default;

// ---- what the model shows --------------------------------------------------------------------

void ivObjectTreeModel::Reset(Mode mode, std::shared_ptr<ivPdf> doc) {
    beginResetModel();
    m_mode = doc ? mode : Mode::Empty;
    m_doc = std::move(doc);
    m_top.clear();
    m_entries.clear();
    m_rowNodes.clear();
    m_filter.reset();
    m_matches = {};
    m_expandable.clear();
    endResetModel();
}

void ivObjectTreeModel::Clear() {
    Reset(Mode::Empty, nullptr);
}

void ivObjectTreeModel::ShowCatalog(std::shared_ptr<ivPdf> doc) {
    beginResetModel();
    m_mode = Mode::Empty;
    m_top.clear();
    m_rowNodes.clear();
    m_doc = std::move(doc);
    if (m_doc && m_doc->Catalog()) {
        m_mode = Mode::Catalog;
        auto root = std::make_unique<Node>();
        root->kind = Kind::Catalog;
        root->value = m_doc->Catalog();
        const ivItemText item = CatalogItemText(*m_doc);
        root->text = item.text;
        root->icon = item.icon;
        root->unresolved = item.unresolved;
        m_top.push_back(std::move(root));
    }
    endResetModel();
}

void ivObjectTreeModel::ShowPages(std::shared_ptr<ivPdf> doc) {
    Reset(Mode::Pages, std::move(doc));
}

void ivObjectTreeModel::ShowEntries(std::shared_ptr<ivPdf> doc, std::vector<XrefEntry*> entries) {
    Reset(Mode::Entries, std::move(doc));
    beginResetModel();
    m_entries = std::move(entries);
    endResetModel();
}

void ivObjectTreeModel::ShowSections(std::shared_ptr<ivPdf> doc) {
    Reset(Mode::Sections, std::move(doc));
    if (!m_doc) return;
    beginResetModel();
    // Whether each entry unfolds, one bit an entry: the view asks it of every row of a section
    // it unfolds, and looking at a million objects one by one then would take too long.
    m_expandable.resize(m_doc->Sections().size());
    for (std::size_t s = 0; s < m_doc->Sections().size(); ++s) {
        const auto& entries = m_doc->Sections()[s]->entries;
        m_expandable[s].resize(entries.size());
        for (std::size_t i = 0; i < entries.size(); ++i)
            m_expandable[s][i] = IsExpandable(LoadObject(*m_doc, entries[i]));
    }
    const auto& sections = m_doc->Sections();
    for (std::size_t s = 0; s < sections.size(); ++s) {
        auto node = std::make_unique<Node>();
        node->kind = Kind::Section;
        node->section = static_cast<std::uint32_t>(s);
        node->row = static_cast<int>(s);
        node->icon = kIconSection;
        node->text = SectionItemText(*sections[s], SectionRevision(s, sections.size()));
        node->fetched = true;
        // Its first row: the trailer of a table, or the section's own stream.
        auto first = std::make_unique<Node>();
        first->parent = node.get();
        first->section = node->section;
        if (const pdfStream* stream = sections[s]->xrefStream) {
            first->kind = Kind::XrefStream;
            first->value = stream;
            first->text = "XREF Stream";
            first->icon = kIconStream;
        } else {
            first->kind = Kind::Trailer;
            first->text = "Trailer";
            first->icon = kIconTrailer;
        }
        node->children.push_back(std::move(first));
        m_top.push_back(std::move(node));
    }
    endResetModel();
}

void ivObjectTreeModel::SetFilter(std::optional<ivXrefFilter> filter) {
    if (m_mode != Mode::Sections) return;
    beginResetModel();
    m_rowNodes.clear();
    for (auto& section : m_top) {
        // The trailer's or stream's items are searched anew under the new filter.
        section->children.front()->children.clear();
        section->children.front()->fetched = false;
    }
    m_filter = std::move(filter);
    m_matches = m_filter ? FindMatches(*m_doc, *m_filter) : ivXrefMatches{};
    endResetModel();
}

std::size_t ivObjectTreeModel::EntryTotal() const {
    std::size_t total = 0;
    if (m_doc && m_mode == Mode::Sections)
        for (const auto& section : m_doc->Sections()) total += section->entries.size();
    return total;
}

// ---- lists -----------------------------------------------------------------------------------

std::uint32_t ivObjectTreeModel::ListSize(std::uint32_t group) const {
    if (!m_doc) return 0;
    if (group == 0) {
        const std::size_t n = m_mode == Mode::Pages ? m_doc->Pages().size() : m_entries.size();
        return static_cast<std::uint32_t>(std::min<std::size_t>(n, 0x7FFFFFFF));
    }
    const std::size_t s = group - 1;
    const std::size_t n = m_filter ? m_matches.rows[s].size() : m_doc->Sections()[s]->entries.size();
    return static_cast<std::uint32_t>(std::min<std::size_t>(n, 0x7FFFFFFE));
}

XrefEntry* ivObjectTreeModel::ListEntry(std::uint32_t group, std::uint32_t row) const {
    if (group == 0) return m_mode == Mode::Entries ? m_entries[row] : nullptr;
    const std::size_t s = group - 1;
    const std::uint32_t i = m_filter ? m_matches.rows[s][row] : row;
    return m_doc->Sections()[s]->entries[i];
}

ivObjectTreeModel::Node* ivObjectTreeModel::Materialize(std::uint32_t group, std::uint32_t row) const {
    std::unique_ptr<Node>& slot = m_rowNodes[ListId(group, row)];
    if (!slot) {
        slot = std::make_unique<Node>();
        slot->listRow = true;
        slot->group = group;
        slot->listIndex = row;
        if (m_mode == Mode::Pages && group == 0) {
            slot->kind = Kind::Page;
            slot->page = row;
            slot->value = m_doc->Pages()[row]->Object();
        } else {
            slot->kind = Kind::Entry;
            slot->entry = ListEntry(group, row);
        }
    }
    return slot.get();
}

ivObjectTreeModel::Node* ivObjectTreeModel::NodeOf(const QModelIndex& index) const {
    if (!index.isValid()) return nullptr;
    const quintptr id = index.internalId();
    if (IsListId(id)) return Materialize(GroupOf(id), RowOf(id));
    return reinterpret_cast<Node*>(id);
}

ivObjectTreeModel::Item ivObjectTreeModel::ItemOf(const QModelIndex& index) const {
    Item item;
    if (!index.isValid()) return item;
    const quintptr id = index.internalId();
    if (!IsListId(id)) {
        item.node = reinterpret_cast<Node*>(id);
        item.kind = item.node->kind;
        item.entry = item.node->entry;
        item.page = item.node->page;
        return item;
    }
    // A list row is read from the list itself; its node, if it was ever made, is not needed.
    const std::uint32_t group = GroupOf(id), row = RowOf(id);
    if (m_mode == Mode::Pages && group == 0) {
        item.kind = Kind::Page;
        item.page = row;
    } else {
        item.kind = Kind::Entry;
        item.entry = ListEntry(group, row);
    }
    return item;
}

QModelIndex ivObjectTreeModel::IndexOfNode(const Node* node) const {
    if (!node) return {};
    if (node->listRow) {
        const int row = static_cast<int>(node->listIndex) + (node->group == 0 ? 0 : 1);
        return createIndex(row, 0, quintptr(ListId(node->group, node->listIndex)));
    }
    return createIndex(node->row, 0, const_cast<Node*>(node));
}

// ---- the model interface -----------------------------------------------------------------------

QModelIndex ivObjectTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column != 0 || row >= rowCount(parent)) return {};
    if (!parent.isValid()) {
        if (m_mode == Mode::Pages || m_mode == Mode::Entries)
            return createIndex(row, 0, quintptr(ListId(0, static_cast<std::uint32_t>(row))));
        return createIndex(row, 0, m_top[static_cast<std::size_t>(row)].get());
    }
    Node* node = NodeOf(parent);
    if (node->kind == Kind::Section && row > 0)
        return createIndex(row, 0, quintptr(ListId(node->section + 1, static_cast<std::uint32_t>(row - 1))));
    ChildCount(*node);
    return createIndex(row, 0, node->children[static_cast<std::size_t>(row)].get());
}

QModelIndex ivObjectTreeModel::parent(const QModelIndex& child) const {
    if (!child.isValid()) return {};
    const quintptr id = child.internalId();
    if (IsListId(id)) {
        const std::uint32_t group = GroupOf(id);
        return group == 0 ? QModelIndex() : IndexOfNode(m_top[group - 1].get());
    }
    return IndexOfNode(reinterpret_cast<Node*>(id)->parent);
}

int ivObjectTreeModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0) return 0;
    if (!parent.isValid()) {
        if (m_mode == Mode::Pages || m_mode == Mode::Entries) return static_cast<int>(ListSize(0));
        return static_cast<int>(m_top.size());
    }
    Node* node = NodeOf(parent);
    if (node->kind == Kind::Section) return 1 + static_cast<int>(ListSize(node->section + 1));
    if (!hasChildren(parent)) return 0;
    return static_cast<int>(ChildCount(*node));
}

int ivObjectTreeModel::columnCount(const QModelIndex&) const {
    return 1;
}

bool ivObjectTreeModel::hasChildren(const QModelIndex& parent) const {
    if (!parent.isValid()) return rowCount(parent) > 0;
    if (const quintptr id = parent.internalId(); IsListId(id) && GroupOf(id) > 0) {
        // A section's row: one bit, without touching the entry.
        const std::size_t s = GroupOf(id) - 1;
        const std::uint32_t row = RowOf(id);
        return m_expandable[s][m_filter ? m_matches.rows[s][row] : row];
    }
    const Item item = ItemOf(parent);
    switch (item.kind) {
        case Kind::Section:
        case Kind::Trailer:
        case Kind::XrefStream:
        case Kind::Page:
            return true;
        case Kind::StreamData:
            return false;
        case Kind::Entry:
            return IsExpandable(LoadObject(*m_doc, item.entry));
        case Kind::Object:
        case Kind::Catalog:
            return IsExpandable(item.node->value);
    }
    return false;
}

// Children are made the first time they are counted: the view counts only the rows of items
// it shows unfolded, so nothing is made before an item unfolds.
std::size_t ivObjectTreeModel::ChildCount(Node& node) const {
    if (!node.fetched) {
        node.fetched = true;
        MakeChildren(node);
        for (std::size_t i = 0; i < node.children.size(); ++i) {
            node.children[i]->parent = &node;
            node.children[i]->row = static_cast<int>(i);
        }
    }
    return node.children.size();
}

// ---- children ------------------------------------------------------------------------------------

void ivObjectTreeModel::MakeChildren(Node& node) const {
    switch (node.kind) {
        case Kind::Trailer: {
            const XrefSection& s = *m_doc->Sections()[node.section];
            const std::pair<const char*, const ObjRef*> slots[] = {
                {"Root", &s.root}, {"Encrypt", &s.encrypt}, {"Info", &s.info}, {"ID", &s.id}};
            for (const auto& [key, slot] : slots) {
                if (slot->Empty()) continue;
                const pdfObject* value = slot->obj;
                std::string prefix = std::string(key) + " ";
                if (!value) {
                    value = ResolveRef(*m_doc, slot->Id());
                    if (!value) continue;
                    prefix = ivFormat("%s %u %u R ", key, slot->num, static_cast<unsigned>(slot->gen));
                }
                AddObjectItem(node, prefix, value);
            }
            break;
        }
        case Kind::Entry:
            AddObjectChildren(node, LoadObject(*m_doc, node.entry));
            break;
        default:
            AddObjectChildren(node, node.value);
    }
    if (!Searched(node)) return;
    // Under a text filter the trailer's and the section stream's items show only what matches,
    // and dictionaries that hold a match.
    std::vector<const pdfObject*> path;
    std::erase_if(node.children, [&](const std::unique_ptr<Node>& child) {
        return !m_filter->TextMatches(child->text) && !Contains(child->value, 0, path);
    });
}

bool ivObjectTreeModel::Searched(const Node& node) const {
    if (!m_filter || m_filter->GetMode() != ivXrefFilter::Mode::Text) return false;
    for (const Node* n = &node; n; n = n->parent)
        if (n->kind == Kind::Trailer || n->kind == Kind::XrefStream) return true;
    return node.kind == Kind::Trailer || node.kind == Kind::XrefStream;
}

bool ivObjectTreeModel::Contains(const pdfObject* value, int depth,
                                 std::vector<const pdfObject*>& path) const {
    value = Deref(*m_doc, value);
    if (!value || depth > kSearchDepth || std::find(path.begin(), path.end(), value) != path.end())
        return false;
    const pdfObject* dict = value;
    if (const pdfStream* s = AsStream(value)) dict = s->dict;
    const pdfDict* d = AsDict(dict);
    if (!d) return false;
    path.push_back(value);
    bool found = false;
    for (const pdfPair& pair : d->Entries()) {
        if (!pair.value) continue;
        if (m_filter->TextMatches(ObjectItemText(*m_doc, KeyPrefix(pair.key), pair.value).text) ||
            Contains(pair.value, depth + 1, path)) {
            found = true;
            break;
        }
    }
    path.pop_back();
    return found;
}

void ivObjectTreeModel::AddObjectItem(Node& node, const std::string& prefix, const pdfObject* value) const {
    auto child = std::make_unique<Node>();
    const ivItemText item = ObjectItemText(*m_doc, prefix, value);
    child->value = value;
    child->text = item.text;
    child->icon = item.icon;
    child->unresolved = item.unresolved;
    node.children.push_back(std::move(child));
}

void ivObjectTreeModel::AddObjectChildren(Node& node, const pdfObject* value) const {
    // A reference unfolds as what it leads to; chains of them are followed.
    for (int hops = 0; value && value->tag == kTagIndirect && hops < kLongestChain; ++hops)
        value = ResolveRef(*m_doc, static_cast<const pdfRef*>(value)->Id());
    if (!value || value->tag == kTagIndirect) return;
    auto add = [&](const std::string& prefix, const pdfObject* item) { AddObjectItem(node, prefix, item); };
    const pdfObject* dict = value;
    if (const pdfStream* s = AsStream(value)) dict = s->dict;
    if (const pdfArray* a = AsArray(dict)) {
        for (const pdfObject* item : a->Elements())
            if (item) add({}, item);
    } else if (const pdfDict* d = AsDict(dict)) {
        for (const pdfPair& pair : d->Entries())
            if (pair.value) add(KeyPrefix(pair.key), pair.value);
    }
    if (const pdfStream* s = AsStream(value)) {
        auto data = std::make_unique<Node>();
        data->kind = Kind::StreamData;
        data->value = s;
        data->text = "Stream";
        data->icon = kIconStreamData;
        node.children.push_back(std::move(data));
    }
}

// ---- what an item says ---------------------------------------------------------------------------

ivObjectTreeModel::Kind ivObjectTreeModel::KindOf(const QModelIndex& index) const {
    return ItemOf(index).kind;
}

XrefEntry* ivObjectTreeModel::EntryOf(const QModelIndex& index) const {
    return ItemOf(index).entry;
}

const pdfObject* ivObjectTreeModel::ValueOf(const QModelIndex& index) const {
    const Item item = ItemOf(index);
    if (item.kind == Kind::Entry) return item.entry ? LoadObject(*m_doc, item.entry) : nullptr;
    if (item.kind == Kind::Page) return m_doc->Pages()[item.page]->Object();
    return item.node ? item.node->value : nullptr;
}

const pdfObject* ivObjectTreeModel::ObjectToShow(const QModelIndex& index) const {
    const Kind kind = ItemOf(index).kind;
    if (!index.isValid() || kind == Kind::Section || kind == Kind::Trailer) return nullptr;
    const pdfObject* value = ValueOf(index);
    for (int hops = 0; value && value->tag == kTagIndirect && hops < kLongestChain; ++hops)
        value = ResolveRef(*m_doc, static_cast<const pdfRef*>(value)->Id());
    return value && value->tag != kTagIndirect ? value : nullptr;
}

QString ivObjectTreeModel::TextOf(const QModelIndex& index) const {
    const Item item = ItemOf(index);
    if (!index.isValid()) return {};
    switch (item.kind) {
        case Kind::Entry:
            return Utf8(EntryItemText(*m_doc, *item.entry));
        case Kind::Page:
            return Utf8(PageItemText(item.page, *m_doc->Pages()[item.page]).text);
        default:
            return Utf8(item.node->text);
    }
}

QString ivObjectTreeModel::HintOf(const QModelIndex& index) const {
    const Item item = ItemOf(index);
    if (!index.isValid()) return {};
    switch (item.kind) {
        case Kind::Section:
            return Utf8(SectionItemHint(*m_doc->Sections()[item.node->section]));
        case Kind::Trailer:
            return {};
        case Kind::Entry:
            return Utf8(EntryItemHint(*m_doc, *item.entry));
        case Kind::StreamData:
            return Utf8(StreamDataHint(*static_cast<const pdfStream*>(item.node->value)));
        default:
            return Utf8(ObjectItemHint(*m_doc, ValueOf(index)));
    }
}

QVariant ivObjectTreeModel::Icon(const QModelIndex& index) const {
    const Item item = ItemOf(index);
    switch (item.kind) {
        case Kind::Entry:
            return TreeIcon(EntryItemIcon(*m_doc, *item.entry), false);
        case Kind::Page:
            return TreeIcon(PageItemText(item.page, *m_doc->Pages()[item.page]).icon, false);
        default:
            return TreeIcon(item.node->icon, item.node->unresolved);
    }
}

QVariant ivObjectTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || !m_doc) return {};
    switch (role) {
        case Qt::DisplayRole:
            return TextOf(index);
        case Qt::ToolTipRole:
            return HintOf(index);
        case Qt::DecorationRole:
            return Icon(index);
        case KindRole:
            return static_cast<int>(KindOf(index));
        case UnresolvedRole:
            return ItemOf(index).node ? ItemOf(index).node->unresolved : false;
        default:
            return {};
    }
}

// ---- finding rows --------------------------------------------------------------------------------

QModelIndex ivObjectTreeModel::IndexOfSection(std::size_t section) const {
    if (m_mode != Mode::Sections || section >= m_top.size()) return {};
    return IndexOfNode(m_top[section].get());
}

QModelIndex ivObjectTreeModel::IndexOfEntry(std::size_t section, const XrefEntry* entry) const {
    if (m_mode != Mode::Sections || section >= m_top.size() || !entry) return {};
    const auto group = static_cast<std::uint32_t>(section + 1);
    auto at = [&](std::uint32_t r) {
        return createIndex(static_cast<int>(r) + 1, 0, quintptr(ListId(group, r)));
    };
    if (m_filter) {
        for (std::uint32_t r = 0, rows = ListSize(group); r < rows; ++r)
            if (ListEntry(group, r) == entry) return at(r);
        return {};
    }
    // Unfiltered, a section's entries are in order of number and generation.
    const auto& entries = m_doc->Sections()[section]->entries;
    auto it = std::lower_bound(entries.begin(), entries.end(), entry->Id(),
                               [](const XrefEntry* e, ObjId id) { return e->Id() < id; });
    for (; it != entries.end() && (*it)->Id() == entry->Id(); ++it)
        if (*it == entry) return at(static_cast<std::uint32_t>(it - entries.begin()));
    return {};
}
