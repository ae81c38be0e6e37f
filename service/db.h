#ifndef QBPD_SERVICE_DB_H_
#define QBPD_SERVICE_DB_H_

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qbpd::service {

// A failure of the database; the service answers it with its failure code.
class DbError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The SQL the service writes runs unchanged on both stores: "?" parameters,
// "INSERT ... RETURNING id" for a new row's id, "ON CONFLICT ... DO
// NOTHING/UPDATE" for upserts, and "rowid" as the order in which rows of a
// table without an id were added. Only the schema differs (see schema.h).
enum class Dialect { kSqlite, kPostgres };

// What a store runs one statement with; a store makes these, the service
// uses them through Statement.
class StatementImpl {
 public:
  virtual ~StatementImpl() = default;
  virtual void Bind(int index, std::string_view text) = 0;
  virtual void Bind(int index, std::int64_t number) = 0;
  virtual bool Step() = 0;
  virtual std::string Text(int column) const = 0;
  virtual std::int64_t Int(int column) const = 0;
};

// One prepared statement. Values are always bound, never spliced into the
// text, so no input can change what a statement does.
class Statement {
 public:
  explicit Statement(std::unique_ptr<StatementImpl> impl)
      : impl_(std::move(impl)) {}
  Statement(Statement&&) noexcept = default;
  Statement& operator=(Statement&&) noexcept = default;
  ~Statement();

  // Parameters count from 1, as in the SQL text's "?" order.
  Statement& Bind(int index, std::string_view text) {
    impl_->Bind(index, text);
    return *this;
  }
  Statement& Bind(int index, const char* text) {
    return Bind(index, std::string_view(text));
  }
  Statement& Bind(int index, const std::string& text) {
    return Bind(index, std::string_view(text));
  }
  Statement& Bind(int index, std::int64_t number) {
    impl_->Bind(index, number);
    return *this;
  }
  Statement& BindInt(int index, int number) {
    return Bind(index, static_cast<std::int64_t>(number));
  }

  // Runs one step; true when a row is ready to be read. Throws DbError.
  bool Step() { return impl_->Step(); }
  // Runs to the end, for statements that return no rows.
  void Run();

  std::string Text(int column) const { return impl_->Text(column); }
  std::int64_t Int(int column) const { return impl_->Int(column); }

 private:
  std::unique_ptr<StatementImpl> impl_;
};

// The service's store: one connection to its database. Not thread-safe: the
// service uses it under its lock. Every failure throws DbError.
class Db {
 public:
  virtual ~Db() = default;

  virtual Dialect dialect() const = 0;
  // Whether other service instances may use the same database at once, so
  // that nothing may be kept in one instance's memory alone.
  virtual bool shared() const = 0;
  // Runs fixed SQL text without parameters, one or more statements.
  virtual void Exec(const char* sql) = 0;
  virtual Statement Prepare(std::string_view sql) = 0;

  // A transaction: SQLite takes the write lock at its start; PostgreSQL
  // reads committed data, and the service's statements that must happen
  // once (a confirmation, a first seeding) are conditional updates or
  // inserts that a concurrent one waits for and then finds done.
  virtual void Begin() = 0;
  virtual void Commit() = 0;
  virtual void Rollback() = 0;
};

// The SQLite database file at `path`, made if missing: the store of one
// service on one machine.
std::unique_ptr<Db> OpenSqliteDb(const std::string& path);

// A PostgreSQL database named by `conninfo` (a "postgresql://" URI or
// "key=value" words, as libpq reads them): the store that several instances
// share. Throws DbError with libpq's reason when it cannot connect.
std::unique_ptr<Db> OpenPostgresDb(const std::string& conninfo);

// Steps an "INSERT ... RETURNING id" through and gives the new row's id;
// throws DbError when it made no row.
std::int64_t InsertReturningId(Statement& insert);

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
