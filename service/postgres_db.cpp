// The store that several service instances share: a PostgreSQL database
// through libpq.
#include "service/db.h"

#include <charconv>
#include <libpq-fe.h>
#include <optional>
#include <vector>

namespace qbpd::service {

namespace {

// The service's SQL numbers its parameters "?" as SQLite does; PostgreSQL
// wants "$1", "$2", ... A "?" inside a quoted literal or name stays.
std::string NumberParameters(std::string_view sql) {
  std::string out;
  out.reserve(sql.size() + 16);
  int next = 1;
  char quote = 0;
  for (const char c : sql) {
    if (quote != 0) {
      quote = c == quote ? 0 : quote;
      out += c;
    } else if (c == '\'' || c == '"') {
      quote = c;
      out += c;
    } else if (c == '?') {
      out += '$' + std::to_string(next++);
    } else {
      out += c;
    }
  }
  return out;
}

// The message of a failed command, without libpq's trailing line end.
std::string ErrorOf(PGconn* conn, const PGresult* result) {
  std::string message = result != nullptr ? PQresultErrorMessage(result) : "";
  if (message.empty()) {
    message = PQerrorMessage(conn);
  }
  while (!message.empty() && message.back() == '\n') {
    message.pop_back();
  }
  return message;
}

struct ResultDeleter {
  void operator()(PGresult* result) const { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, ResultDeleter>;

class PostgresDb;

class PostgresStatement : public StatementImpl {
 public:
  PostgresStatement(PostgresDb& db, std::string_view sql)
      : db_(db), sql_(NumberParameters(sql)) {}

  void Bind(int index, std::string_view text) override {
    // A text value of PostgreSQL ends at its first NUL; SQLite would keep
    // the rest. Such a value is refused rather than cut.
    if (text.find('\0') != std::string_view::npos) {
      throw DbError("bind: a text value holds a NUL character");
    }
    Slot(index) = std::string(text);
  }

  void Bind(int index, std::int64_t number) override {
    Slot(index) = std::to_string(number);
  }

  bool Step() override;

  std::string Text(int column) const override {
    if (!result_ || row_ < 0 || row_ >= PQntuples(result_.get()) ||
        column >= PQnfields(result_.get())) {
      throw DbError("read: no such column");
    }
    return std::string(
        PQgetvalue(result_.get(), row_, column),
        static_cast<size_t>(PQgetlength(result_.get(), row_, column)));
  }

  std::int64_t Int(int column) const override {
    const std::string text = Text(column);
    std::int64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
  }

 private:
  std::optional<std::string>& Slot(int index) {
    if (index < 1) {
      throw DbError("bind: parameters count from 1");
    }
    if (static_cast<size_t>(index) > values_.size()) {
      values_.resize(static_cast<size_t>(index));
    }
    return values_[static_cast<size_t>(index) - 1];
  }

  PostgresDb& db_;
  std::string sql_;
  std::vector<std::optional<std::string>> values_;
  Result result_;
  int row_ = -1;
};

class PostgresDb : public Db {
 public:
  explicit PostgresDb(const std::string& conninfo)
      : conn_(PQconnectdb(conninfo.c_str())) {
    if (conn_ == nullptr || PQstatus(conn_) != CONNECTION_OK) {
      std::string message =
          conn_ != nullptr ? ErrorOf(conn_, nullptr) : "out of memory";
      PQfinish(conn_);
      throw DbError("cannot connect to the database: " + message);
    }
    Settle();
  }
  PostgresDb(const PostgresDb&) = delete;
  PostgresDb& operator=(const PostgresDb&) = delete;
  ~PostgresDb() override { PQfinish(conn_); }

  Dialect dialect() const override { return Dialect::kPostgres; }
  bool shared() const override { return true; }

  void Exec(const char* sql) override {
    Reconnect();
    Result result(PQexec(conn_, sql));
    Check(result.get(), "exec");
  }

  Statement Prepare(std::string_view sql) override {
    return Statement(std::make_unique<PostgresStatement>(*this, sql));
  }

  void Begin() override {
    Exec("BEGIN ISOLATION LEVEL READ COMMITTED");
    in_transaction_ = true;
  }
  void Commit() override {
    in_transaction_ = false;
    Exec("COMMIT");
  }
  void Rollback() override {
    in_transaction_ = false;
    if (!broken_ && PQstatus(conn_) == CONNECTION_OK) {
      Exec("ROLLBACK");
    }
  }

  Result Run(const std::string& sql,
             const std::vector<std::optional<std::string>>& values) {
    Reconnect();
    std::vector<const char*> pointers;
    pointers.reserve(values.size());
    for (const auto& value : values) {
      pointers.push_back(value ? value->c_str() : nullptr);
    }
    Result result(PQexecParams(conn_, sql.c_str(),
                               static_cast<int>(pointers.size()), nullptr,
                               pointers.data(), nullptr, nullptr,
                               /*resultFormat=*/0));
    Check(result.get(), "step");
    return result;
  }

 private:
  void Check(const PGresult* result, const char* what) {
    const ExecStatusType status =
        result != nullptr ? PQresultStatus(result) : PGRES_FATAL_ERROR;
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK) {
      return;
    }
    // A connection the server closed can still look good to libpq until it
    // is used again; an error of the connection itself (libpq's own, with
    // no SQLSTATE, class 08, or the server shutting down) marks it for a
    // new one.
    const char* state = result != nullptr
                            ? PQresultErrorField(result, PG_DIAG_SQLSTATE)
                            : nullptr;
    const std::string code = state != nullptr ? state : "";
    if (PQstatus(conn_) != CONNECTION_OK || code.empty() ||
        code.starts_with("08") || code.starts_with("57P")) {
      broken_ = true;
    }
    throw DbError(std::string(what) + ": " + ErrorOf(conn_, result));
  }

  // A connection that broke (the server restarted, a replica was promoted
  // behind the same address) is opened again before the next statement,
  // but never inside a transaction: its earlier statements are gone.
  void Reconnect() {
    if (!broken_ && PQstatus(conn_) == CONNECTION_OK) {
      return;
    }
    if (in_transaction_) {
      throw DbError("the database connection broke during a transaction");
    }
    PQreset(conn_);
    if (PQstatus(conn_) != CONNECTION_OK) {
      throw DbError("cannot reconnect to the database: " +
                    ErrorOf(conn_, nullptr));
    }
    broken_ = false;
    Settle();
  }

  // The notices of "IF NOT EXISTS" and the like are no news to the
  // service's log; text goes both ways as UTF-8.
  void Settle() {
    Result result(PQexec(conn_,
                         "SET client_min_messages TO warning; "
                         "SET client_encoding TO 'UTF8'"));
    Check(result.get(), "connect");
  }

  PGconn* conn_;
  bool in_transaction_ = false;
  bool broken_ = false;
};

bool PostgresStatement::Step() {
  if (!result_) {
    result_ = db_.Run(sql_, values_);
  }
  ++row_;
  return row_ < PQntuples(result_.get());
}

}  // namespace

std::unique_ptr<Db> OpenPostgresDb(const std::string& conninfo) {
  return std::make_unique<PostgresDb>(conninfo);
}

}  // namespace qbpd::service
