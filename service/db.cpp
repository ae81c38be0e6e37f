#include "service/db.h"

namespace qbpd::service {

Statement::~Statement() = default;

void Statement::Run() {
  while (Step()) {
  }
}

std::int64_t InsertReturningId(Statement& insert) {
  if (!insert.Step()) {
    throw DbError("insert: no row was made");
  }
  const std::int64_t id = insert.Int(0);
  insert.Run();
  return id;
}

Transaction::Transaction(Db& db) : db_(db) {
  db_.Begin();
}

Transaction::~Transaction() {
  if (!done_) {
    try {
      db_.Rollback();
    } catch (const DbError&) {
      // Nothing more can be done; the connection rolls back on close.
    }
  }
}

void Transaction::Commit() {
  db_.Commit();
  done_ = true;
}

}  // namespace qbpd::service
