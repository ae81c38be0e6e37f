#include "ui/qt/folder_tree_widget.h"

#include "platform/forms/controls.h"
#include "platform/forms/host.h"
#include "platform/forms/keys.h"
#include "platform/places.h"
#include "ui/qt/control_widget.h"
#include "ui/qt/qt_convert.h"
#include "ui/qt/widget_handle.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyle>

#include <cstdlib>
#include <memory>
#include <utility>

namespace qbpd {

// The folders under the tree's roots, read when a folder is first opened.
// Not QFileSystemModel: that model has a single root, and this tree shows
// several side by side (the desktop lies inside the home folder, media
// outside it).
class FolderTreeModel : public QAbstractItemModel {
 public:
  struct Node {
    QString label;
    QString path;
    QString selection;  // for a root; "" below it (the path then)
    Node* parent = nullptr;
    int row = 0;
    bool listed = false;
    std::vector<std::unique_ptr<Node>> children;
  };

  FolderTreeModel(std::vector<FolderRoot> roots, QObject* parent)
      : QAbstractItemModel(parent), roots_(std::move(roots)) {
    Build();
  }

  // Drops everything read, so that the next look reads the disk again.
  void Reread() {
    beginResetModel();
    Build();
    endResetModel();
  }

  Node* NodeOf(const QModelIndex& index) const {
    return index.isValid() ? static_cast<Node*>(index.internalPointer())
                           : top_.get();
  }
  QModelIndex IndexOfNode(Node* node) const {
    return node == top_.get() ? QModelIndex() : createIndex(node->row, 0, node);
  }
  Node* Top() const { return top_.get(); }

  QModelIndex index(int row,
                    int column,
                    const QModelIndex& parent) const override {
    const Node* node = NodeOf(parent);
    if (column != 0 || row < 0 ||
        row >= static_cast<int>(node->children.size())) {
      return {};
    }
    return createIndex(row, 0, node->children[row].get());
  }
  QModelIndex parent(const QModelIndex& child) const override {
    if (!child.isValid()) {
      return {};
    }
    return IndexOfNode(NodeOf(child)->parent);
  }
  int rowCount(const QModelIndex& parent) const override {
    return static_cast<int>(NodeOf(parent)->children.size());
  }
  int columnCount(const QModelIndex&) const override { return 1; }
  bool hasChildren(const QModelIndex& parent) const override {
    const Node* node = NodeOf(parent);
    if (node->listed) {
      return !node->children.empty();
    }
    // One entry read tells whether to draw the expand arrow.
    QDirIterator it(node->path, QDir::Dirs | QDir::NoDotAndDotDot);
    return it.hasNext();
  }
  bool canFetchMore(const QModelIndex& parent) const override {
    return !NodeOf(parent)->listed;
  }
  void fetchMore(const QModelIndex& parent) override { List(NodeOf(parent)); }
  QVariant data(const QModelIndex& index, int role) const override {
    const Node* node = NodeOf(index);
    if (!index.isValid()) {
      return {};
    }
    switch (role) {
      case Qt::DisplayRole:
        return node->label;
      case Qt::ToolTipRole:
        return node->path;
      case Qt::DecorationRole:
        return QApplication::style()->standardIcon(QStyle::SP_DirIcon);
      default:
        return {};
    }
  }

  // Reads the folders of `node` once.
  void List(Node* node) {
    if (node->listed) {
      return;
    }
    node->listed = true;
    const QFileInfoList entries =
        QDir(node->path)
            .entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot,
                           QDir::Name | QDir::IgnoreCase | QDir::LocaleAware);
    if (entries.isEmpty()) {
      return;
    }
    beginInsertRows(IndexOfNode(node), 0, entries.size() - 1);
    for (const QFileInfo& entry : entries) {
      auto child = std::make_unique<Node>();
      child->label = entry.fileName();
      child->path = entry.absoluteFilePath();
      child->parent = node;
      child->row = static_cast<int>(node->children.size());
      node->children.push_back(std::move(child));
    }
    endInsertRows();
  }

 private:
  void Build() {
    top_ = std::make_unique<Node>();
    top_->listed = true;
    for (const FolderRoot& root : roots_) {
      auto node = std::make_unique<Node>();
      node->label = root.label;
      node->path = root.path;
      node->selection = root.selection;
      node->parent = top_.get();
      node->row = static_cast<int>(top_->children.size());
      top_->children.push_back(std::move(node));
    }
  }

  std::vector<FolderRoot> roots_;
  std::unique_ptr<Node> top_;
};

namespace {

constexpr char kDesktop[] = "Desktop";

QString WithoutTrailingSlash(QString path) {
  while (path.size() > 1 && path.endsWith('/')) {
    path.chop(1);
  }
  return path;
}

int KeyCodeOf(const QKeyEvent& event) {
  const int key = event.key();
  switch (key) {
    case Qt::Key_Up:
      return kKeyUp;
    case Qt::Key_Down:
      return kKeyDown;
    case Qt::Key_Left:
      return kKeyLeft;
    case Qt::Key_Right:
      return kKeyRight;
    case Qt::Key_PageUp:
      return kKeyPageUp;
    case Qt::Key_PageDown:
      return kKeyPageDown;
    case Qt::Key_Home:
      return kKeyHome;
    case Qt::Key_End:
      return kKeyEnd;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return kKeyReturn;
    case Qt::Key_Escape:
      return kKeyEscape;
    case Qt::Key_Tab:
      return kKeyTab;
    case Qt::Key_Space:
      return kKeySpace;
    case Qt::Key_Backspace:
      return kKeyBack;
    case Qt::Key_Delete:
      return kKeyDelete;
    case Qt::Key_F1:
      return kKeyF1;
    default:
      // Letters and digits: their upper-case character code.
      return (key >= Qt::Key_A && key <= Qt::Key_Z) ||
                     (key >= Qt::Key_0 && key <= Qt::Key_9)
                 ? key
                 : 0;
  }
}

}  // namespace

std::vector<FolderRoot> DefaultFolderRoots() {
  const Places places = FindPlaces();
  std::vector<FolderRoot> roots;
  roots.push_back({kDesktop, QString::fromStdString(places.desktop), kDesktop});
  const QString home = WithoutTrailingSlash(QDir::homePath());
  roots.push_back({"Home", home, home});
  const char* user = std::getenv("USER");
  QStringList media = {"/media"};
  if (user != nullptr && *user != '\0') {
    media.push_back(QString("/run/media/") + user);
  }
  media.push_back("/mnt");
  for (const QString& folder : media) {
    if (QFileInfo(folder).isDir()) {
      roots.push_back({folder, folder, folder});
    }
  }
  roots.push_back({"File System", "/", "/"});
  return roots;
}

FolderTreeWidget::FolderTreeWidget(FolderTree& control,
                                   std::vector<FolderRoot> roots,
                                   QWidget* parent)
    : QTreeView(parent),
      control_(control),
      model_(new FolderTreeModel(std::move(roots), this)) {
  setModel(model_);
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  shown_refreshes_ = control_.Refreshes();
  Sync();
}

FolderTreeWidget::~FolderTreeWidget() = default;

QString FolderTreeWidget::SelectionOf(const QModelIndex& index) const {
  const FolderTreeModel::Node* node = model_->NodeOf(index);
  if (!index.isValid()) {
    return {};
  }
  return node->selection.isEmpty() ? node->path : node->selection;
}

QModelIndex FolderTreeWidget::IndexOf(const QString& selection) {
  using Node = FolderTreeModel::Node;
  const QString wanted = WithoutTrailingSlash(selection);
  if (wanted.isEmpty()) {
    return {};
  }
  // The root named by the text, else the one whose folder holds the path
  // most closely.
  Node* best = nullptr;
  for (const auto& root : model_->Top()->children) {
    if (root->selection == wanted) {
      return model_->IndexOfNode(root.get());
    }
    const QString prefix = root->path == "/" ? "/" : root->path + "/";
    if ((root->path == wanted || wanted.startsWith(prefix)) &&
        (best == nullptr || root->path.size() > best->path.size())) {
      best = root.get();
    }
  }
  if (best == nullptr) {
    return {};
  }
  Node* node = best;
  const QStringList parts =
      wanted.mid(best->path.size()).split('/', Qt::SkipEmptyParts);
  for (const QString& part : parts) {
    model_->List(node);
    Node* next = nullptr;
    for (const auto& child : node->children) {
      if (child->label == part) {
        next = child.get();
        break;
      }
    }
    if (next == nullptr) {
      break;  // gone from the disk: the deepest folder that is there
    }
    node = next;
  }
  return model_->IndexOfNode(node);
}

void FolderTreeWidget::Sync() {
  if (detached_) {
    return;
  }
  const QString wanted = QString::fromStdString(control_.SelectedFolder());
  const bool reread = control_.Refreshes() != shown_refreshes_;
  if (reread) {
    shown_refreshes_ = control_.Refreshes();
    syncing_ = true;
    model_->Reread();
    syncing_ = false;
  }
  if (reread || wanted != shown_selection_) {
    ShowSelection(wanted);
  }
  setEnabled(control_.Enabled());
  setVisible(control_.Visible());
}

void FolderTreeWidget::ShowSelection(const QString& selection) {
  shown_selection_ = selection;
  const QModelIndex index = IndexOf(selection);
  syncing_ = true;
  if (index.isValid()) {
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent()) {
      expand(up);
    }
    setCurrentIndex(index);
    scrollTo(index);
  } else {
    selectionModel()->clear();
  }
  syncing_ = false;
}

void FolderTreeWidget::currentChanged(const QModelIndex& current,
                                      const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  if (syncing_ || detached_ || !current.isValid()) {
    return;
  }
  const QString selection = SelectionOf(current);
  shown_selection_ = selection;
  control_.SetSelectedFolder(selection.toStdString());
}

void FolderTreeWidget::RaiseMouse(const char* name, QMouseEvent* event) {
  EventArgs args;
  switch (event->button()) {
    case Qt::LeftButton:
      args.Button = 1;
      break;
    case Qt::RightButton:
      args.Button = 2;
      break;
    default:
      break;
  }
  args.Shift = ShiftOf(event->modifiers());
  const QPoint p = viewport()->mapTo(this, event->position().toPoint());
  args.X = p.x() * kTwipsPerPixel;
  args.Y = p.y() * kTwipsPerPixel;
  control_.Raise(name, args);
}

void FolderTreeWidget::RaiseKey(const char* name, QKeyEvent* event) {
  EventArgs args;
  args.KeyCode = KeyCodeOf(*event);
  args.Shift = ShiftOf(event->modifiers());
  if (args.KeyCode != 0) {
    control_.Raise(name, args);
  }
}

void FolderTreeWidget::mousePressEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  control_.SetFocus();
  if (!detached_) {
    RaiseMouse("MouseDown", event);
  }
  if (!detached_) {
    QTreeView::mousePressEvent(event);
  }
}

void FolderTreeWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (detached_) {
    return;
  }
  QTreeView::mouseReleaseEvent(event);
  RaiseMouse("MouseUp", event);
}

void FolderTreeWidget::keyPressEvent(QKeyEvent* event) {
  if (detached_) {
    return;
  }
  RaiseKey("KeyDown", event);
  if (!detached_) {
    QTreeView::keyPressEvent(event);
  }
}

void FolderTreeWidget::keyReleaseEvent(QKeyEvent* event) {
  if (detached_) {
    return;
  }
  QTreeView::keyReleaseEvent(event);
  RaiseKey("KeyUp", event);
}

std::unique_ptr<ControlWidget> MakeFolderTreeWidget(FolderTree& control,
                                                    QWidget* parent) {
  return std::make_unique<WidgetHandle<FolderTreeWidget>>(
      new FolderTreeWidget(control, DefaultFolderRoots(), parent));
}

}  // namespace qbpd
