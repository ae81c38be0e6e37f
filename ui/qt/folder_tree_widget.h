#ifndef QBPD_UI_QT_FOLDER_TREE_WIDGET_H_
#define QBPD_UI_QT_FOLDER_TREE_WIDGET_H_

#include <QModelIndex>
#include <QString>
#include <QTreeView>

#include <vector>

namespace qbpd {

class FolderTree;
class FolderTreeModel;

// One top-level entry of the folder tree.
struct FolderRoot {
  QString label;  // what the tree shows
  QString path;   // the folder, absolute, no trailing "/" (but "/" itself)
  // What SelectedFolder holds when this entry is chosen: "Desktop" for the
  // desktop, else the path.
  QString selection;
};

// The tree's entries, in order, for the person running the program:
//   "Desktop"     the XDG desktop folder (selected as the text "Desktop");
//   "Home"        the home folder;
//   "/media", "/run/media/<user>", "/mnt" where they exist: where removable
//                 media and other drives are mounted;
//   "File System" "/", so that any folder the program names can be shown.
std::vector<FolderRoot> DefaultFolderRoots();

// The folder tree: directories only, read lazily (a folder is listed when it
// is first expanded), sorted by name without regard to case.
//
// Choosing a folder with the mouse raises MouseDown, then FolderClick through
// FolderTree::SetSelectedFolder (the folder's path, or "Desktop"), then
// MouseUp, as the scripted host's SelectFolder does; with the keys, KeyDown,
// FolderClick, KeyUp. Sync shows a SelectedFolder that the program set
// (trailing "/" or not) by expanding down to it and selecting it without
// raising anything; a part of the path that no longer exists stops it at the
// deepest folder that does. A new Refresh count re-reads every folder.
class FolderTreeWidget : public QTreeView {
 public:
  FolderTreeWidget(FolderTree& control,
                   std::vector<FolderRoot> roots,
                   QWidget* parent);
  ~FolderTreeWidget() override;

  void Sync();
  void Detach() { detached_ = true; }

  // The index of a folder as SelectedFolder names it; invalid when it isn't
  // under any root. Lists the folders on the way.
  QModelIndex IndexOf(const QString& selection);
  // What SelectedFolder holds for the entry at `index`.
  QString SelectionOf(const QModelIndex& index) const;

 protected:
  void currentChanged(const QModelIndex& current,
                      const QModelIndex& previous) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;

 private:
  void RaiseMouse(const char* name, QMouseEvent* event);
  void RaiseKey(const char* name, QKeyEvent* event);
  void ShowSelection(const QString& selection);

  FolderTree& control_;
  FolderTreeModel* model_;  // a child of the view
  bool detached_ = false;
  bool syncing_ = false;
  QString shown_selection_;
  unsigned shown_refreshes_ = 0;
};

}  // namespace qbpd

#endif  // QBPD_UI_QT_FOLDER_TREE_WIDGET_H_
