#include "platform/settings_store.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace qbpd {
namespace {

// How long a write waits for another process that holds the database.
constexpr int kBusyTimeoutMs = 5000;
constexpr mode_t kFolderMode = 0700;
constexpr mode_t kFileMode = 0600;

// Key paths and value names compare without regard to case. Only ASCII
// letters fold, whatever the locale, so that two processes always agree.
std::string Fold(std::string_view s) {
  std::string out(s);
  for (char& c : out) {
    if (c >= 'a' && c <= 'z') {
      c = static_cast<char>(c - 'a' + 'A');
    }
  }
  return out;
}

bool FileExists(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0;
}

std::string ParentFolder(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) {
    return std::string();
  }
  return slash == 0 ? std::string("/") : path.substr(0, slash);
}

// Makes each missing folder on the way to the database with mode 0700, set
// again with chmod so that the umask neither widens nor narrows it.
bool MakePrivateFolders(const std::string& folder) {
  if (folder.empty() || FileExists(folder)) {
    return true;
  }
  if (!MakePrivateFolders(ParentFolder(folder))) {
    return false;
  }
  if (mkdir(folder.c_str(), kFolderMode) != 0) {
    return errno == EEXIST;
  }
  return chmod(folder.c_str(), kFolderMode) == 0;
}

// Makes the database's folder and an empty file of mode 0600. The mode is set
// with fchmod as well, before any data is written, so that it doesn't depend
// on the umask. An existing file is left as it is.
bool CreateDatabaseFile(const std::string& path) {
  if (!MakePrivateFolders(ParentFolder(path))) {
    return false;
  }
  const int fd =
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
           kFileMode);
  if (fd < 0) {
    // Another process may have made it a moment ago.
    return errno == EEXIST;
  }
  const bool ok = fchmod(fd, kFileMode) == 0;
  close(fd);
  return ok;
}

// One prepared statement, reset after every use.
class Statement {
 public:
  Statement() = default;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { sqlite3_finalize(stmt_); }

  bool Prepare(sqlite3* db, const char* sql) {
    return sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &stmt_,
                              nullptr) == SQLITE_OK;
  }
  sqlite3_stmt* get() { return stmt_; }
  void Bind(int index, std::string_view text) {
    sqlite3_bind_text(stmt_, index, text.data(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
  }
  std::string Column(int index) {
    const auto* text =
        reinterpret_cast<const char*>(sqlite3_column_text(stmt_, index));
    const int size = sqlite3_column_bytes(stmt_, index);
    return text ? std::string(text, static_cast<std::size_t>(size))
                : std::string();
  }
  int Step() { return sqlite3_step(stmt_); }
  void Reset() {
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
  }

 private:
  sqlite3_stmt* stmt_ = nullptr;
};

// Runs a statement to its end and resets it; true when it finished cleanly.
bool RunToEnd(Statement& s) {
  int rc;
  do {
    rc = s.Step();
  } while (rc == SQLITE_ROW);
  s.Reset();
  return rc == SQLITE_DONE;
}

class SqliteSettingsStore : public SettingsStore {
 public:
  explicit SqliteSettingsStore(std::string path) : path_(std::move(path)) {}
  SqliteSettingsStore(const SqliteSettingsStore&) = delete;
  SqliteSettingsStore& operator=(const SqliteSettingsStore&) = delete;
  ~SqliteSettingsStore() override { Close(); }

  std::string Read(std::string_view key, std::string_view value) override {
    if (!Ready(/*create=*/false)) {
      return std::string();
    }
    Statement& s = statements_->read;
    s.Bind(1, Fold(key));
    s.Bind(2, Fold(value));
    std::string data;
    if (s.Step() == SQLITE_ROW) {
      data = s.Column(0);
    }
    s.Reset();
    return data;
  }

  bool Write(std::string_view key,
             std::string_view value,
             std::string_view data) override {
    if (!Ready(/*create=*/true)) {
      return false;
    }
    Statement& s = statements_->upsert;
    s.Bind(1, key);
    s.Bind(2, Fold(key));
    s.Bind(3, value);
    s.Bind(4, Fold(value));
    s.Bind(5, data);
    return InTransaction(s) >= 0;
  }

  bool Delete(std::string_view key, std::string_view value) override {
    if (!Ready(/*create=*/false)) {
      return false;
    }
    Statement& s = statements_->remove;
    s.Bind(1, Fold(key));
    s.Bind(2, Fold(value));
    return InTransaction(s) > 0;
  }

  std::vector<std::pair<std::string, std::string>> List(
      std::string_view key) override {
    std::vector<std::pair<std::string, std::string>> out;
    if (!Ready(/*create=*/false)) {
      return out;
    }
    Statement& s = statements_->list;
    s.Bind(1, Fold(key));
    while (s.Step() == SQLITE_ROW) {
      out.emplace_back(s.Column(0), s.Column(1));
    }
    s.Reset();
    return out;
  }

  std::vector<std::string> Keys() override {
    std::vector<std::string> out;
    if (!Ready(/*create=*/false)) {
      return out;
    }
    Statement& s = statements_->keys;
    while (s.Step() == SQLITE_ROW) {
      out.push_back(s.Column(0));
    }
    s.Reset();
    std::sort(out.begin(), out.end());
    return out;
  }

 private:
  struct Statements {
    Statement read, upsert, remove, list, keys, begin, commit, rollback;
  };

  // Opens the database and prepares the statements. With `create`, the
  // file, its folder and the table are made when missing; without, a missing
  // file or table reads as empty and nothing is made. A failure closes the
  // connection so that the next call tries afresh.
  bool Ready(bool create) {
    if (statements_) {
      return true;
    }
    if (!db_) {
      if (!create && !FileExists(path_)) {
        return false;
      }
      if (create && !CreateDatabaseFile(path_)) {
        return false;
      }
      if (sqlite3_open_v2(path_.c_str(), &db_,
                          SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW,
                          nullptr) != SQLITE_OK) {
        Close();
        return false;
      }
      sqlite3_busy_timeout(db_, kBusyTimeoutMs);
      // Write-ahead logging lets a reader and a writer work side by side.
      // The mode is kept in the file, so a busy moment here only means that
      // another process is setting it, and a read-only file is read in the
      // mode it has; a file that isn't a database fails.
      const int rc = sqlite3_exec(db_, "PRAGMA journal_mode=WAL", nullptr,
                                  nullptr, nullptr);
      if (rc != SQLITE_OK && rc != SQLITE_BUSY && rc != SQLITE_LOCKED &&
          rc != SQLITE_READONLY) {
        Close();
        return false;
      }
    }
    if (create && sqlite3_exec(db_,
                               "CREATE TABLE IF NOT EXISTS setting_value ("
                               " id INTEGER PRIMARY KEY AUTOINCREMENT,"
                               " key_path TEXT NOT NULL,"
                               " key_folded TEXT NOT NULL,"
                               " name TEXT NOT NULL,"
                               " name_folded TEXT NOT NULL,"
                               " data TEXT NOT NULL,"
                               " UNIQUE (key_folded, name_folded))",
                               nullptr, nullptr, nullptr) != SQLITE_OK) {
      Close();
      return false;
    }
    auto statements = std::make_unique<Statements>();
    const bool prepared =
        statements->read.Prepare(
            db_,
            "SELECT data FROM setting_value"
            " WHERE key_folded = ?1 AND name_folded = ?2") &&
        // An existing value keeps its place in the order of its key.
        statements->upsert.Prepare(
            db_,
            "INSERT INTO setting_value"
            " (key_path, key_folded, name, name_folded, data)"
            " VALUES (?1, ?2, ?3, ?4, ?5)"
            " ON CONFLICT (key_folded, name_folded)"
            " DO UPDATE SET data = excluded.data") &&
        statements->remove.Prepare(db_,
                                   "DELETE FROM setting_value"
                                   " WHERE key_folded = ?1 AND name_folded = "
                                   "?2") &&
        statements->list.Prepare(db_,
                                 "SELECT name, data FROM setting_value"
                                 " WHERE key_folded = ?1 ORDER BY id") &&
        // A key is shown as it was spelt when its oldest value was made.
        statements->keys.Prepare(db_,
                                 "SELECT key_path FROM setting_value"
                                 " WHERE id IN (SELECT MIN(id) FROM"
                                 " setting_value GROUP BY key_folded)") &&
        statements->begin.Prepare(db_, "BEGIN IMMEDIATE") &&
        statements->commit.Prepare(db_, "COMMIT") &&
        statements->rollback.Prepare(db_, "ROLLBACK");
    if (!prepared) {
      // A database without the table yet reads as empty; anything else
      // (a file that isn't a database) is retried on the next call.
      Close();
      return false;
    }
    statements_ = std::move(statements);
    return true;
  }

  // Runs one changing statement in its own immediate transaction, so that a
  // second process waits for the lock instead of failing half way. Gives the
  // number of rows changed, or -1 on failure.
  int InTransaction(Statement& s) {
    if (!RunToEnd(statements_->begin)) {
      s.Reset();
      return -1;
    }
    if (!RunToEnd(s)) {
      RunToEnd(statements_->rollback);
      return -1;
    }
    const int changed = sqlite3_changes(db_);
    if (!RunToEnd(statements_->commit)) {
      RunToEnd(statements_->rollback);
      return -1;
    }
    return changed;
  }

  void Close() {
    statements_.reset();
    if (db_) {
      sqlite3_close(db_);
      db_ = nullptr;
    }
  }

  std::string path_;
  sqlite3* db_ = nullptr;
  std::unique_ptr<Statements> statements_;
};

}  // namespace

std::unique_ptr<SettingsStore> MakeSqliteSettingsStore(std::string path) {
  return std::make_unique<SqliteSettingsStore>(std::move(path));
}

}  // namespace qbpd
