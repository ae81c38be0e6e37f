#ifndef QBPD_ONLINE_SERVICE_TYPES_H_
#define QBPD_ONLINE_SERVICE_TYPES_H_

#include "core/keyed_collection.h"
#include "core/ordered_dictionary.h"

#include <string>
#include <vector>

namespace qbpd {

// An array of text, element 0 first (gsaUserAddress, gasShareEmails, ...).
using StringArray = std::vector<std::string>;

// A two-dimensional array of text, indexed (row, column) from 0: the album
// list (row 0 the ids, row 1 the names), the shipping bands, the size totals,
// a print line. Every row has the same number of columns. A subscript out of
// range is runtime error 9, never a crash.
class TextGrid {
 public:
  TextGrid() = default;
  // A grid of `rows` by `columns` empty cells.
  TextGrid(int rows, int columns);
  // A grid from its rows; shorter rows are padded with empty cells.
  static TextGrid FromRows(const std::vector<std::vector<std::string>>& rows);

  int Rows() const { return rows_; }
  int Columns() const { return columns_; }
  // No cells at all (the "no array" of the program).
  bool IsEmpty() const { return cells_.empty(); }

  const std::string& operator()(int row, int column) const;
  std::string& operator()(int row, int column);

  // Gives the grid a new size; with `preserve` the cells that fit are kept,
  // otherwise every cell is empty.
  void ReDim(int rows, int columns, bool preserve);

  std::vector<std::vector<std::string>> ToRows() const;

  bool operator==(const TextGrid& other) const = default;

 private:
  size_t Index(int row, int column) const;

  int rows_ = 0;
  int columns_ = 0;
  std::vector<std::string> cells_;
};

// Text keys to text items in order: the photos of an album (image id to
// position) and the order index (position to path, later image id to
// position).
using TextDictionary = OrderedDictionary<std::string, std::string>;

// Size number (1 to 4) to its price tiers: one row per tier with the lower
// quantity, the upper quantity and the unit price.
using PriceTierDictionary = OrderedDictionary<int, TextGrid>;

// The print lines of an order, one 4 x 3 grid per photo under the photo's key.
using PrintLineCollection = KeyedCollection<TextGrid>;

// Compares two version texts part by part as numbers ("1.1" equals "1.1.0",
// "1.9" is below "1.10"); a part that isn't a number counts by its leading
// digits. Returns <0, 0 or >0.
int CompareVersions(const std::string& a, const std::string& b);

}  // namespace qbpd

#endif  // QBPD_ONLINE_SERVICE_TYPES_H_
