// The store of one service on one machine: a SQLite file in its data folder.
#include "service/db.h"

#include <sqlite3.h>

namespace qbpd::service {

namespace {

[[noreturn]] void Fail(sqlite3* db, const char* what) {
  throw DbError(std::string(what) + ": " + sqlite3_errmsg(db));
}

class SqliteStatement : public StatementImpl {
 public:
  SqliteStatement(sqlite3* db, std::string_view sql) : db_(db) {
    if (sqlite3_prepare_v2(db_, sql.data(), static_cast<int>(sql.size()),
                           &stmt_, nullptr) != SQLITE_OK) {
      Fail(db_, "prepare");
    }
  }
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;
  ~SqliteStatement() override { sqlite3_finalize(stmt_); }

  void Bind(int index, std::string_view text) override {
    if (sqlite3_bind_text(stmt_, index, text.data(),
                          static_cast<int>(text.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
      Fail(db_, "bind");
    }
  }

  void Bind(int index, std::int64_t number) override {
    if (sqlite3_bind_int64(stmt_, index, number) != SQLITE_OK) {
      Fail(db_, "bind");
    }
  }

  bool Step() override {
    const int rc = sqlite3_step(stmt_);
    if (rc == SQLITE_ROW) {
      return true;
    }
    if (rc == SQLITE_DONE) {
      return false;
    }
    Fail(db_, "step");
  }

  std::string Text(int column) const override {
    const auto* text = sqlite3_column_text(stmt_, column);
    if (text == nullptr) {
      return {};
    }
    return std::string(
        reinterpret_cast<const char*>(text),
        static_cast<size_t>(sqlite3_column_bytes(stmt_, column)));
  }

  std::int64_t Int(int column) const override {
    return sqlite3_column_int64(stmt_, column);
  }

 private:
  sqlite3* db_;
  sqlite3_stmt* stmt_ = nullptr;
};

class SqliteDb : public Db {
 public:
  explicit SqliteDb(const std::string& path) {
    if (sqlite3_open_v2(
            path.c_str(), &db_,
            SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
            nullptr) != SQLITE_OK) {
      std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
      sqlite3_close(db_);
      throw DbError("cannot open " + path + ": " + message);
    }
    sqlite3_busy_timeout(db_, 5000);
    Exec("PRAGMA foreign_keys = ON");
    Exec("PRAGMA journal_mode = WAL");
  }
  SqliteDb(const SqliteDb&) = delete;
  SqliteDb& operator=(const SqliteDb&) = delete;
  ~SqliteDb() override { sqlite3_close(db_); }

  Dialect dialect() const override { return Dialect::kSqlite; }
  bool shared() const override { return false; }

  void Exec(const char* sql) override {
    char* error = nullptr;
    if (sqlite3_exec(db_, sql, nullptr, nullptr, &error) != SQLITE_OK) {
      std::string message = error ? error : "unknown error";
      sqlite3_free(error);
      throw DbError(message);
    }
  }

  Statement Prepare(std::string_view sql) override {
    return Statement(std::make_unique<SqliteStatement>(db_, sql));
  }

  // The write lock is taken at once, so that a transaction never fails
  // half-way for want of it.
  void Begin() override { Exec("BEGIN IMMEDIATE"); }
  void Commit() override { Exec("COMMIT"); }
  void Rollback() override { Exec("ROLLBACK"); }

 private:
  sqlite3* db_ = nullptr;
};

}  // namespace

std::unique_ptr<Db> OpenSqliteDb(const std::string& path) {
  return std::make_unique<SqliteDb>(path);
}

}  // namespace qbpd::service
