// The table of the WAV library.

#pragma once

#include <QAbstractTableModel>
#include <QCollator>
#include <QTreeView>

#include "state/app_state_info.h"
#include "view/commands.h"

namespace quorvan::ui {

// Shows the rows of wavIndex, whose texts are ready made.
class LibraryModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  LibraryModel(APP_STATE_INFO* app, QObject* parent) : QAbstractTableModel(parent), app_(*app) {}

  // The index has other rows, or the same ones in another order.
  void Renew();

  int rowCount(const QModelIndex& parent) const override;
  int columnCount(const QModelIndex& parent) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  APP_STATE_INFO& app_;
  int rows_ = 0;  // of the index when it was renewed: entries may have come since
};

class LibraryList : public QTreeView {
  Q_OBJECT

 public:
  LibraryList(APP_STATE_INFO* app, QWidget* parent);

  // Row 0 alone is selected and has the focus.
  void SelectFirstRow();

  // The rows are new; nothing is selected, and the row that had the focus keeps it.
  void RenewRows();

  // Sorts the rows and keeps the selected ones selected; the last of them gets the focus.
  void Sort(Command command, bool ascending);

  // Sets every column's width for a view of that size.
  void ResetColumnWidths(int viewWidth, int viewHeight);

  // Row with the focus, -1 for none, and the selected rows as flags.
  int FocusRow() const;
  std::vector<std::uint8_t> SelectedRows() const;

 signals:
  void SelectionChanged();
  void SortRequested(quint32 command);
  void RowActivated();
  void Left();
  void PopupRequested(const QPoint& globalPosition);

 protected:
  bool event(QEvent* event) override;
  bool focusNextPrevChild(bool next) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

 private:
  void SetFocusRow(int row);

  APP_STATE_INFO& app_;
  LibraryModel* model_;
  QCollator names_{QLocale(QLocale::Japanese)};
};

}  // namespace quorvan::ui
