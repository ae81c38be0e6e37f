#include "online/service_types.h"

#include "platform/forms/runtime_error.h"

#include <algorithm>
#include <cctype>

namespace qbpd {

TextGrid::TextGrid(int rows, int columns) {
  ReDim(rows, columns, /*preserve=*/false);
}

TextGrid TextGrid::FromRows(const std::vector<std::vector<std::string>>& rows) {
  size_t widest = 0;
  for (const auto& row : rows) {
    widest = std::max(widest, row.size());
  }
  TextGrid grid(static_cast<int>(rows.size()), static_cast<int>(widest));
  for (size_t r = 0; r < rows.size(); ++r) {
    for (size_t c = 0; c < rows[r].size(); ++c) {
      grid(static_cast<int>(r), static_cast<int>(c)) = rows[r][c];
    }
  }
  return grid;
}

size_t TextGrid::Index(int row, int column) const {
  if (row < 0 || row >= rows_ || column < 0 || column >= columns_) {
    throw RuntimeError(kErrSubscript, "Subscript out of range: (" +
                                          std::to_string(row) + ", " +
                                          std::to_string(column) + ") of a " +
                                          std::to_string(rows_) + " x " +
                                          std::to_string(columns_) + " array");
  }
  return static_cast<size_t>(row) * columns_ + column;
}

const std::string& TextGrid::operator()(int row, int column) const {
  return cells_[Index(row, column)];
}

std::string& TextGrid::operator()(int row, int column) {
  return cells_[Index(row, column)];
}

void TextGrid::ReDim(int rows, int columns, bool preserve) {
  if (rows < 0 || columns < 0) {
    throw RuntimeError(kErrSubscript, "Subscript out of range: negative size");
  }
  if (rows == 0 || columns == 0) {
    rows = 0;
    columns = 0;
  }
  std::vector<std::string> cells(static_cast<size_t>(rows) * columns);
  if (preserve) {
    for (int r = 0; r < std::min(rows, rows_); ++r) {
      for (int c = 0; c < std::min(columns, columns_); ++c) {
        cells[static_cast<size_t>(r) * columns + c] =
            std::move(cells_[Index(r, c)]);
      }
    }
  }
  rows_ = rows;
  columns_ = columns;
  cells_ = std::move(cells);
}

std::vector<std::vector<std::string>> TextGrid::ToRows() const {
  std::vector<std::vector<std::string>> rows(rows_);
  for (int r = 0; r < rows_; ++r) {
    rows[r].assign(cells_.begin() + static_cast<long>(r) * columns_,
                   cells_.begin() + static_cast<long>(r + 1) * columns_);
  }
  return rows;
}

namespace {

std::vector<long long> VersionParts(const std::string& text) {
  std::vector<long long> parts;
  size_t start = 0;
  while (start <= text.size()) {
    size_t dot = text.find('.', start);
    std::string piece = text.substr(
        start, dot == std::string::npos ? std::string::npos : dot - start);
    long long value = 0;
    size_t i = 0;
    while (i < piece.size() &&
           std::isspace(static_cast<unsigned char>(piece[i]))) {
      ++i;
    }
    for (; i < piece.size() &&
           std::isdigit(static_cast<unsigned char>(piece[i])) &&
           value < 1'000'000'000;
         ++i) {
      value = value * 10 + (piece[i] - '0');
    }
    parts.push_back(value);
    if (dot == std::string::npos) {
      break;
    }
    start = dot + 1;
  }
  return parts;
}

}  // namespace

int CompareVersions(const std::string& a, const std::string& b) {
  std::vector<long long> pa = VersionParts(a);
  std::vector<long long> pb = VersionParts(b);
  size_t n = std::max(pa.size(), pb.size());
  pa.resize(n, 0);
  pb.resize(n, 0);
  for (size_t i = 0; i < n; ++i) {
    if (pa[i] != pb[i]) {
      return pa[i] < pb[i] ? -1 : 1;
    }
  }
  return 0;
}

}  // namespace qbpd
