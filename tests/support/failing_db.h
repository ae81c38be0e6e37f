#ifndef QBPD_TESTS_SUPPORT_FAILING_DB_H_
#define QBPD_TESTS_SUPPORT_FAILING_DB_H_

#include "service/db.h"

#include <memory>
#include <string>
#include <utility>

namespace qbpd::testing {

// The service's store on a real one, failing on purpose: every statement
// whose SQL text holds `fail_on` throws DbError when it runs, as a full disk
// or a database server that went away would. `failed` counts those; with
// `fail_on` empty nothing fails.
class FailingDb : public service::Db {
 public:
  explicit FailingDb(std::unique_ptr<service::Db> real)
      : real_(std::move(real)) {}

  std::string fail_on;
  int failed = 0;

  service::Dialect dialect() const override { return real_->dialect(); }
  bool shared() const override { return real_->shared(); }

  void Exec(const char* sql) override {
    if (Fails(sql)) {
      throw service::DbError("exec: disk I/O error");
    }
    real_->Exec(sql);
  }

  service::Statement Prepare(std::string_view sql) override {
    return service::Statement(std::make_unique<FailingStatement>(
        real_->Prepare(sql), Fails(sql), failed));
  }

  void Begin() override { real_->Begin(); }
  void Commit() override { real_->Commit(); }
  void Rollback() override { real_->Rollback(); }

 private:
  class FailingStatement : public service::StatementImpl {
   public:
    FailingStatement(service::Statement real, bool fail, int& failed)
        : real_(std::move(real)), fail_(fail), failed_(failed) {}
    void Bind(int index, std::string_view text) override {
      real_.Bind(index, text);
    }
    void Bind(int index, std::int64_t number) override {
      real_.Bind(index, number);
    }
    bool Step() override {
      if (fail_) {
        ++failed_;
        throw service::DbError("step: disk I/O error");
      }
      return real_.Step();
    }
    std::string Text(int column) const override { return real_.Text(column); }
    std::int64_t Int(int column) const override { return real_.Int(column); }

   private:
    service::Statement real_;
    bool fail_;
    int& failed_;
  };

  bool Fails(std::string_view sql) const {
    return !fail_on.empty() && sql.find(fail_on) != std::string_view::npos;
  }

  std::unique_ptr<service::Db> real_;
};

}  // namespace qbpd::testing

#endif  // QBPD_TESTS_SUPPORT_FAILING_DB_H_
