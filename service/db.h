#ifndef QBPD_SERVICE_DB_H_
#define QBPD_SERVICE_DB_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace qbpd::service {

// A failure of the database; the service answers it with its failure code.
class DbError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One prepared statement. Values are always bound, never spliced into the
// text, so no input can change what a statement does.
class Statement {
 public:
  Statement(sqlite3* db, std::string_view sql);
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  // Parameters count from 1, as in the SQL text's "?" order.
  Statement& Bind(int index, std::string_view text);
  Statement& Bind(int index, std::int64_t number);
  Statement& BindInt(int index, int number) {
    return Bind(index, static_cast<std::int64_t>(number));
  }

  // Runs one step; true when a row is ready to be read.
  bool Step();
  // Runs to the end, for statements that return no rows.
  void Run();

  std::string Text(int column) const;
  std::int64_t Int(int column) const;

 private:
  sqlite3* db_;
  sqlite3_stmt* stmt_ = nullptr;
};

// An open SQLite database file.
class Db {
 public:
  explicit Db(const std::string& path);
  Db(const Db&) = delete;
  Db& operator=(const Db&) = delete;
  ~Db();

  // Runs fixed SQL text without parameters (schema, transactions).
  void Exec(const char* sql);
  Statement Prepare(std::string_view sql) { return Statement(db_, sql); }
  std::int64_t LastInsertId() const;

 private:
  sqlite3* db_ = nullptr;
};

// Begins a transaction and rolls it back unless Commit was called.
class Transaction {
 public:
  explicit Transaction(Db& db);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();
  void Commit();

 private:
  Db& db_;
  bool done_ = false;
};

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_DB_H_
