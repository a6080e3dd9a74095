// The table that shows the WAV library.

#pragma once

#include <QAbstractTableModel>
#include <QCollator>
#include <QTreeView>

#include "state/app_state_info.h"
#include "view/commands.h"

namespace quorvan::ui {

// Gives the table the rows of `wavIndex`. The texts of the columns stand ready in the entries.
class LibraryModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  LibraryModel(APP_STATE_INFO* app, QObject* parent) : QAbstractTableModel(parent), app_(*app) {}

  // Tells the table that `wavIndex` has other rows, or the same rows in another order.
  void Renew();

  int rowCount(const QModelIndex& parent) const override;
  int columnCount(const QModelIndex& parent) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  APP_STATE_INFO& app_;
  int rows_ = 0;  // entries when Renew was called; the library may have grown since
};

// The table, whose rows count from 0 in display order.
class LibraryList : public QTreeView {
  Q_OBJECT

 public:
  LibraryList(APP_STATE_INFO* app, QWidget* parent);

  // Selects row 0 alone and gives it the focus. Does nothing for an empty table.
  void SelectFirstRow();

  // Shows the present rows of `wavIndex`, none of them selected. The focus stays on the row number
  // that had it, or moves to the last row if there are fewer rows.
  void RenewRows();

  // Sorts the rows by the column of `command`, ascending or descending. The selected files stay
  // selected, and the last selected row gets the focus; without a selection the focus stays on its
  // row number.
  void Sort(Command command, bool ascending);

  // Sets the width of every column for a view of `viewWidth` x `viewHeight` pixels, the client area
  // of the window without the status bar.
  void ResetColumnWidths(int viewWidth, int viewHeight);

  // The row with the focus, -1 for none.
  int FocusRow() const;
  // One flag for each row, 1 for a selected row.
  std::vector<std::uint8_t> SelectedRows() const;

 signals:
  // The selection or the row with the focus has changed.
  void SelectionChanged();
  // The title of a column that sorts was pressed; `command` is its sort command.
  void SortRequested(quint32 command);
  // A row was double-clicked.
  void RowActivated();
  // A key has asked for a row while none was selected: the row with the focus is now selected.
  void FocusRowSelected();
  // Escape was pressed.
  void Left();
  void PopupRequested(const QPoint& globalPosition);

 protected:
  bool event(QEvent* event) override;
  bool focusNextPrevChild(bool next) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

 private:
  void SetFocusRow(int row);
  void SelectFocusRow();
  void AskForPopup();

  APP_STATE_INFO& app_;
  LibraryModel* model_;
  QSize view_;  // for which the columns have their widths
  QCollator names_{QLocale(QLocale::Japanese)};
};

}  // namespace quorvan::ui
