#include "service/db.h"

#include <sqlite3.h>

namespace qbpd::service {

namespace {

[[noreturn]] void Fail(sqlite3* db, const char* what) {
  throw DbError(std::string(what) + ": " + sqlite3_errmsg(db));
}

}  // namespace

Statement::Statement(sqlite3* db, std::string_view sql) : db_(db) {
  if (sqlite3_prepare_v2(db_, sql.data(), static_cast<int>(sql.size()), &stmt_,
                         nullptr) != SQLITE_OK) {
    Fail(db_, "prepare");
  }
}

Statement::~Statement() {
  sqlite3_finalize(stmt_);
}

Statement& Statement::Bind(int index, std::string_view text) {
  if (sqlite3_bind_text(stmt_, index, text.data(),
                        static_cast<int>(text.size()),
                        SQLITE_TRANSIENT) != SQLITE_OK) {
    Fail(db_, "bind");
  }
  return *this;
}

Statement& Statement::Bind(int index, std::int64_t number) {
  if (sqlite3_bind_int64(stmt_, index, number) != SQLITE_OK) {
    Fail(db_, "bind");
  }
  return *this;
}

bool Statement::Step() {
  const int rc = sqlite3_step(stmt_);
  if (rc == SQLITE_ROW) {
    return true;
  }
  if (rc == SQLITE_DONE) {
    return false;
  }
  Fail(db_, "step");
}

void Statement::Run() {
  while (Step()) {
  }
}

std::string Statement::Text(int column) const {
  const auto* text = sqlite3_column_text(stmt_, column);
  if (text == nullptr) {
    return {};
  }
  return std::string(reinterpret_cast<const char*>(text),
                     static_cast<size_t>(sqlite3_column_bytes(stmt_, column)));
}

std::int64_t Statement::Int(int column) const {
  return sqlite3_column_int64(stmt_, column);
}

Db::Db(const std::string& path) {
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

Db::~Db() {
  sqlite3_close(db_);
}

void Db::Exec(const char* sql) {
  char* error = nullptr;
  if (sqlite3_exec(db_, sql, nullptr, nullptr, &error) != SQLITE_OK) {
    std::string message = error ? error : "unknown error";
    sqlite3_free(error);
    throw DbError(message);
  }
}

std::int64_t Db::LastInsertId() const {
  return sqlite3_last_insert_rowid(db_);
}

Transaction::Transaction(Db& db) : db_(db) {
  db_.Exec("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  if (!done_) {
    try {
      db_.Exec("ROLLBACK");
    } catch (const DbError&) {
      // Nothing more can be done; the connection rolls back on close.
    }
  }
}

void Transaction::Commit() {
  db_.Exec("COMMIT");
  done_ = true;
}

}  // namespace qbpd::service
