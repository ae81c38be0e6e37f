// The service's SQL on both stores: the same text gives the same answers
// on the SQLite file and on a real PostgreSQL cluster, and what must happen
// once under a race does.
#include "service/core_support.h"
#include "service/db.h"
#include "service/schema.h"
#include "service/service_core.h"
#include "service/store_throttle.h"
#include "tests/service/pg_cluster.h"
#include "tests/service/service_fixture.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qbpd::service {
namespace {

// One cluster for the PostgreSQL tests of this file, made by the first of
// them (a run of the SQLite ones alone makes none); each test gets a
// database of its own.
testing::PgCluster* cluster = nullptr;

std::string StoreName(const ::testing::TestParamInfo<Dialect>& store) {
  return store.param == Dialect::kSqlite ? "Sqlite" : "Postgres";
}

class StoreTest : public ::testing::TestWithParam<Dialect> {
 protected:
  static void TearDownTestSuite() {
    delete cluster;
    cluster = nullptr;
  }

  void SetUp() override {
    if (GetParam() == Dialect::kSqlite) {
      db_ = OpenSqliteDb((dir_ / "service.db").string());
    } else {
      if (cluster == nullptr) {
        cluster = new testing::PgCluster();
      }
      if (!cluster->installed()) {
        GTEST_SKIP() << cluster->why();
      }
      ASSERT_TRUE(cluster->running()) << cluster->why();
      static std::atomic<int> count{0};
      conninfo_ = cluster->NewDatabase("store" + std::to_string(++count));
      db_ = OpenPostgresDb(conninfo_);
    }
    PrepareSchema(*db_);
  }

  std::unique_ptr<Db> Second() {
    return GetParam() == Dialect::kSqlite
               ? OpenSqliteDb((dir_ / "service.db").string())
               : OpenPostgresDb(conninfo_);
  }

  std::int64_t AddAccount(const std::string& email) {
    auto insert = db_->Prepare(
        "INSERT INTO accounts (email, password_hash, user_code, first_name, "
        "last_name) VALUES (?, 'h', 'c', 'A', 'B') RETURNING id");
    insert.Bind(1, email);
    return InsertReturningId(insert);
  }

  std::vector<std::string> Column(const char* sql) {
    std::vector<std::string> out;
    auto rows = db_->Prepare(sql);
    while (rows.Step()) {
      out.push_back(rows.Text(0));
    }
    return out;
  }

  testing::TempDir dir_;
  std::string conninfo_;
  std::unique_ptr<Db> db_;
};

TEST_P(StoreTest, ParametersAreBoundInOrderAndNeverInQuotes) {
  auto select = db_->Prepare(
      "SELECT CAST(? AS TEXT), '?', CAST(? AS TEXT) || 'x', "
      "CAST(? AS BIGINT)");
  select.Bind(1, "first").Bind(2, "it's").Bind(3, std::int64_t{-42});
  ASSERT_TRUE(select.Step());
  EXPECT_EQ(select.Text(0), "first");
  EXPECT_EQ(select.Text(1), "?");
  EXPECT_EQ(select.Text(2), "it'sx");
  EXPECT_EQ(select.Int(3), -42);
  EXPECT_FALSE(select.Step());
}

TEST_P(StoreTest, NewRowsTellTheirIdsAndUpsertsDoNothingTwice) {
  const std::int64_t first = AddAccount("ann@example.test");
  const std::int64_t second = AddAccount("bob@example.test");
  EXPECT_GT(second, first);
  // The same address in other case is the same account, as when signing in.
  auto again = db_->Prepare(
      "INSERT INTO accounts (email, password_hash, user_code, first_name, "
      "last_name) VALUES (?, 'h', 'c', 'A', 'B') ON CONFLICT DO NOTHING "
      "RETURNING id");
  again.Bind(1, "ANN@Example.TEST");
  EXPECT_FALSE(again.Step());
  auto find = db_->Prepare("SELECT id FROM accounts WHERE email = ?");
  find.Bind(1, "Ann@EXAMPLE.test");
  ASSERT_TRUE(find.Step());
  EXPECT_EQ(find.Int(0), first);

  // Coupons too are read without regard to case.
  db_->Exec(
      "INSERT INTO coupons (code, percent, value, min_order, expired) "
      "VALUES ('SAVE10', 1, '10', '0', 0)");
  auto coupon = db_->Prepare("SELECT value FROM coupons WHERE code = ?");
  coupon.Bind(1, "save10");
  ASSERT_TRUE(coupon.Step());
  EXPECT_EQ(coupon.Text(0), "10");
}

TEST_P(StoreTest, TheAddressBookKeepsTheOrderOfAdding) {
  const std::int64_t account = AddAccount("ann@example.test");
  for (const char* email : {"zed@example.test", "amy@example.test",
                            "Zed@Example.test", "max@example.test"}) {
    db_->Prepare(
           "INSERT INTO address_book (account_id, email) VALUES (?, ?) "
           "ON CONFLICT DO NOTHING")
        .Bind(1, account)
        .Bind(2, email)
        .Run();
  }
  EXPECT_EQ(Column("SELECT email FROM address_book ORDER BY rowid"),
            (std::vector<std::string>{"zed@example.test", "amy@example.test",
                                      "max@example.test"}));
}

TEST_P(StoreTest, ATransactionLeavesAllOrNothing) {
  {
    Transaction kept(*db_);
    db_->Exec("INSERT INTO meta (key, value) VALUES ('kept', '1')");
    kept.Commit();
  }
  {
    Transaction dropped(*db_);
    db_->Exec("INSERT INTO meta (key, value) VALUES ('dropped', '1')");
  }
  EXPECT_THROW(
      {
        Transaction failed(*db_);
        db_->Exec("INSERT INTO meta (key, value) VALUES ('half', '1')");
        db_->Exec("INSERT INTO meta (key, value) VALUES ('kept', '2')");
        failed.Commit();
      },
      DbError);
  EXPECT_EQ(Column("SELECT key || '=' || value FROM meta ORDER BY key"),
            std::vector<std::string>{"kept=1"});
  // The store goes on after a failed statement.
  EXPECT_THROW(db_->Prepare("SELECT nothing FROM nowhere").Step(), DbError);
  EXPECT_EQ(Column("SELECT value FROM meta").size(), 1u);
}

TEST_P(StoreTest, ASchemaMadeTwiceIsTheSame) {
  AddAccount("ann@example.test");
  PrepareSchema(*Second());
  EXPECT_EQ(Column("SELECT email FROM accounts"),
            std::vector<std::string>{"ann@example.test"});
}

// The failed-login counts kept in the store answer exactly as the ones in
// memory do, for the same failures at the same times.
TEST_P(StoreTest, StoredFailedLoginsCountAsTheOnesInMemory) {
  const ThrottlePolicy policy{.free_failures = 2,
                              .lock_after = 5,
                              .max_delay_seconds = 8,
                              .lock_seconds = 100,
                              .forget_seconds = 300};
  LoginThrottle memory(policy);
  StoreLoginThrottle stored(*db_, "account", policy);
  // Another kind on the same table counts apart.
  StoreLoginThrottle other(*db_, "address", policy);
  struct Step {
    char what;  // 'f' failed, 's' succeeded, 'w' only asked
    const char* key;
    std::int64_t at;
    std::int64_t wait;  // seconds until the key may try again
  };
  const Step steps[] = {
      {'f', "a", 1000, 0},   {'w', "a", 1000, 0},    // free failures
      {'f', "a", 1001, 1},   {'w', "a", 1001, 1},    // then 1, 2, 4 s
      {'f', "a", 1002, 2},   {'f', "a", 1003, 4},    //
      {'w', "a", 1004, 3},                           // counting down
      {'f', "b", 1004, 0},   {'f', "b", 1005, 1},    // another key
      {'f', "b", 1005, 2},   {'s', "b", 1006, 0},    // a success clears it
      {'w', "b", 1006, 0},                           //
      {'f', "a", 1010, 100}, {'f', "a", 1011, 100},  // locked
      {'f', "a", 1012, 100}, {'w', "a", 1050, 62},   // from the last
      {'w', "a", 1111, 1},   {'w', "a", 1112, 0},    //
      {'w', "a", 1400, 0},   {'f', "a", 1400, 0},    // forgotten
      {'f', "a", 1401, 1},                           // counts anew
  };
  for (const Step& step : steps) {
    switch (step.what) {
      case 'f':
        memory.Failed(step.key, step.at);
        stored.Failed(step.key, step.at);
        break;
      case 's':
        memory.Succeeded(step.key);
        stored.Succeeded(step.key);
        break;
    }
    EXPECT_EQ(memory.WaitFor(step.key, step.at), step.wait)
        << step.what << " " << step.key << " at " << step.at;
    EXPECT_EQ(stored.WaitFor(step.key, step.at), step.wait)
        << step.what << " " << step.key << " at " << step.at;
    EXPECT_EQ(other.WaitFor(step.key, step.at), 0);
  }
}

// What a client may send that one store could keep and the other could
// not: both answer alike, and nothing breaks an answer later.
TEST_P(StoreTest, ForeignBytesAndNulsAnswerAlikeOnBothStores) {
  ServiceOptions options;
  options.data_dir = dir_ / "data";
  options.seed_demo = true;
  options.demo_password = kTestDemoPassword;
  options.store = std::move(db_);
  ServiceCore core(options);
  const auto answer = [&](const std::string& operation,
                          const nlohmann::json& body) {
    return core.Call(operation, body).value_or(nlohmann::json());
  };
  const std::string code = answer(
      "LoginUser",
      {{"email", kDemoEmail}, {"password", kTestDemoPassword}})["session"][0];
  // Names from the upload's URL in Latin-1 are kept as UTF-8, with the
  // bytes that are not UTF-8 shown as U+FFFD.
  const auto uploaded = core.Upload({{"authcode", code},
                                     {"albumname", "Caf\xE9"},
                                     {"file", "C:/\xE9t\xE9.png"}},
                                    kPng);
  ASSERT_EQ(uploaded["ok"], true) << uploaded.dump();
  const auto albums = answer("GetAlbumList", {{"authCode", code}});
  EXPECT_EQ(albums["albums"][1].back(), "Caf\xEF\xBF\xBD");
  EXPECT_NE(core.AlbumPage(uploaded["albumId"], code)
                .html.find("\xEF\xBF\xBDt\xEF\xBF\xBD.png"),
            std::string::npos);
  EXPECT_EQ(
      core.Upload({{"authcode", code}, {"albumname", std::string("a\0b", 3)}},
                  kPng)["errCode"],
      "3004");
  // A NUL in the protocol's text is a malformed request.
  EXPECT_THROW(answer("LoginUser", {{"email", std::string("a\0b", 3)}}),
               BadRequest);
  EXPECT_THROW(answer("ShareAlbum",
                      {{"authCode", code}, {"subject", std::string("\0", 1)}}),
               BadRequest);
  // Codes and tokens of bytes the service never gives out are no one's:
  // in a JSON request (where a NUL is malformed, as above) and in a URL.
  for (const std::string& bad : {std::string("\xE9"), std::string("a b")}) {
    EXPECT_EQ(answer("GetAlbumList", {{"authCode", bad}})["errCode"],
              kSessionCode);
  }
  for (const std::string& bad :
       {std::string("\xE9"), std::string("ab\0", 3), std::string("a b")}) {
    EXPECT_EQ(core.Photo("P1", bad).refusal.status, 403);
    EXPECT_EQ(core.SharedAlbumPage(bad).status, 404);
  }
}

INSTANTIATE_TEST_SUITE_P(BothStores,
                         StoreTest,
                         ::testing::Values(Dialect::kSqlite,
                                           Dialect::kPostgres),
                         StoreName);

// What only a server shared by several instances can show.
class PostgresStoreTest : public StoreTest {};

TEST_P(PostgresStoreTest, AConfirmationThatRacesAnotherWaitsAndFindsItDone) {
  const std::int64_t account = AddAccount("ann@example.test");
  auto quote = db_->Prepare(
      "INSERT INTO orders (account_id, status, coupon, photo_keys, summary, "
      "used_free, created) VALUES (?, 'quoted', '', '[]', '{}', 0, 0) "
      "RETURNING id");
  quote.Bind(1, account);
  const std::int64_t order = InsertReturningId(quote);
  constexpr const char* kConfirm =
      "UPDATE orders SET status = 'confirmed' WHERE id = ? AND status = "
      "'quoted' RETURNING id";

  auto other = Second();
  auto watcher = Second();
  Transaction first(*db_);
  auto mine = db_->Prepare(kConfirm);
  mine.Bind(1, order);
  ASSERT_TRUE(mine.Step());
  auto theirs = std::async(std::launch::async, [&] {
    Transaction second(*other);
    auto update = other->Prepare(kConfirm);
    update.Bind(1, order);
    const bool confirmed = update.Step();
    second.Commit();
    return confirmed;
  });
  // The other confirmation is seen waiting for this one's row lock before
  // this one commits; a bound, not a measurement.
  bool waiting = false;
  const auto until =
      std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!waiting && std::chrono::steady_clock::now() < until) {
    auto locks =
        watcher->Prepare("SELECT count(*) FROM pg_locks WHERE NOT granted");
    waiting = locks.Step() && locks.Int(0) > 0;
  }
  EXPECT_TRUE(waiting);
  first.Commit();
  EXPECT_FALSE(theirs.get());
  EXPECT_EQ(Column("SELECT status FROM orders"),
            std::vector<std::string>{"confirmed"});
}

TEST_P(PostgresStoreTest, TextThatPostgresCannotHoldIsRefusedNotCut) {
  auto insert = db_->Prepare("INSERT INTO meta (key, value) VALUES (?, ?)");
  EXPECT_THROW(insert.Bind(1, std::string("a\0b", 3)), DbError);
  EXPECT_TRUE(Column("SELECT key FROM meta").empty());
}

TEST(PostgresStoreOpen, AnUnreachableServerSaysWhy) {
  testing::TempDir dir;
  try {
    OpenPostgresDb("host=" + dir.path().string() + " connect_timeout=2");
    ADD_FAILURE() << "connected to nothing";
  } catch (const DbError& error) {
    EXPECT_EQ(
        std::string(error.what()).rfind("cannot connect to the database", 0),
        0u)
        << error.what();
  }
}

INSTANTIATE_TEST_SUITE_P(OnlyPostgres,
                         PostgresStoreTest,
                         ::testing::Values(Dialect::kPostgres),
                         StoreName);

}  // namespace
}  // namespace qbpd::service
