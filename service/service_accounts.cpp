// The accounts: sign-in, sign-up, the account's data and its address.
#include "service/checks.h"
#include "service/core_support.h"
#include "service/db.h"
#include "service/request.h"
#include "service/service_core.h"

namespace qbpd::service {

using nlohmann::json;

namespace {

std::string Lowered(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

}  // namespace

bool ServiceCore::PasswordIs(const std::string& hash,
                             const std::string& password,
                             Lock& lock) {
  lock.unlock();
  const bool same = options_.password_check
                        ? options_.password_check(hash, password)
                        : PasswordMatches(hash, password);
  lock.lock();
  return same;
}

json ServiceCore::LoginUser(const json& request,
                            const std::string& client,
                            Lock& lock) {
  const std::string email = Trim(Text(request, "email"));
  const std::string password = Text(request, "password");
  const std::string account_key = "account " + Lowered(email);
  const std::string address_key = "address " + client;
  const std::int64_t now = Now();
  // A key with too many failed logins is refused before any check, so that
  // guessing costs the guesser time and the service nothing.
  if (account_throttle_->WaitFor(account_key, now) > 0 ||
      (!client.empty() && address_throttle_->WaitFor(address_key, now) > 0)) {
    return Failure(kThrottledCode);
  }
  const auto failed = [&](bool known_account) {
    if (known_account) {
      account_throttle_->Failed(account_key, Now());
    }
    if (!client.empty()) {
      address_throttle_->Failed(address_key, Now());
    }
  };
  std::int64_t id = 0;
  std::string hash, user_code;
  {  // The statement ends before the lock is given up.
    auto find = db_->Prepare(
        "SELECT id, password_hash, user_code FROM accounts WHERE email = ?");
    find.Bind(1, email);
    if (email.empty() || !find.Step()) {
      failed(false);
      return Failure("2006");
    }
    id = find.Int(0);
    hash = find.Text(1);
    user_code = find.Text(2);
  }
  if (!PasswordIs(hash, password, lock)) {
    failed(true);
    return Failure("2007");
  }
  account_throttle_->Succeeded(account_key);
  return Ok({{"session", {NewSession(id), user_code}}});
}

namespace {

struct YearMonth {
  int year, month;
};

YearMonth Today(std::int64_t now) {
  const std::time_t t = static_cast<std::time_t>(now);
  std::tm parts{};
  gmtime_r(&t, &parts);
  return {parts.tm_year + 1900, parts.tm_mon + 1};
}

// A month written "1" to "12" (or "01"); 0 when anything else.
int ParseMonth(const std::string& text, int offset) {
  const auto value = ParseId(Trim(text));
  if (!value || text.size() > 2) {
    return 0;
  }
  const auto month = static_cast<int>(*value) + offset;
  return month >= 1 && month <= 12 ? month : 0;
}

}  // namespace

json ServiceCore::RegisterUser(const json& request, Lock& lock) {
  auto fields = TextArray(request, "fields");
  fields.resize(std::max<size_t>(fields.size(), 16));
  for (auto& field : fields) {
    field = Trim(field);
  }
  const AddressFields address{fields[4], fields[5], fields[6],
                              fields[7], fields[8], fields[9]};
  const bool has_card = !(fields[12].empty() && fields[13].empty() &&
                          fields[14].empty() && fields[15].empty());
  CardFields card{fields[11], fields[12], ParseMonth(fields[13], 0),
                  fields[14]};
  if (card.name.empty()) {
    card.name = fields[0] + " " + fields[1];
  }
  const YearMonth today = Today(Now());
  std::string code = CheckName(fields[0], "2001");
  if (code.empty()) {
    code = CheckName(fields[1], "2002");
  }
  if (code.empty()) {
    code = CheckEmail(fields[2]);
  }
  if (code.empty()) {
    code = CheckPassword(fields[3]);
  }
  if (code.empty()) {
    code = CheckPhone(fields[9]);
  }
  const bool has_address = !AddressIsEmpty(address);
  if (code.empty() && has_address) {
    code = CheckAddress(address);
  }
  if (code.empty() && has_card) {
    code = CheckCard(card, fields[15], today.year, today.month);
  }
  if (!code.empty()) {
    return Failure(code);
  }
  const auto taken = [&] {
    auto exists = db_->Prepare("SELECT id FROM accounts WHERE email = ?");
    exists.Bind(1, fields[2]);
    return exists.Step();
  };
  if (taken()) {
    return Failure("2021");
  }
  // The hash is made without the lock; another sign-up may take the address
  // meanwhile, so it is asked again after.
  lock.unlock();
  const std::string password_hash = HashPassword(fields[3]);
  lock.lock();
  if (taken()) {
    return Failure("2021");
  }
  const std::string user_code = RandomHex(8);
  std::int64_t account = 0;
  {  // The statement ends before the session is made.
    auto insert = db_->Prepare(
        "INSERT INTO accounts (email, password_hash, user_code, first_name, "
        "last_name, street1, street2, city, state, zip, phone, card_name, "
        "card_masked, card_month, card_year, card_zip) VALUES (?, ?, ?, ?, ?, "
        "?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT DO NOTHING RETURNING id");
    insert.Bind(1, fields[2])
        .Bind(2, password_hash)
        .Bind(3, user_code)
        .Bind(4, fields[0])
        .Bind(5, fields[1]);
    if (has_address) {
      insert.Bind(6, address.street1)
          .Bind(7, address.street2)
          .Bind(8, address.city)
          .Bind(9, address.state)
          .Bind(10, address.zip);
    } else {
      for (int i = 6; i <= 10; ++i) {
        insert.Bind(i, "");
      }
    }
    insert.Bind(11, fields[9]);
    if (has_card) {
      insert.Bind(12, card.name)
          .Bind(13, MaskCardNumber(CardDigits(card.number)))
          .Bind(14, std::to_string(card.month - 1))
          .Bind(15, card.year)
          .Bind(16, fields[15]);
    } else {
      for (int i = 12; i <= 16; ++i) {
        insert.Bind(i, "");
      }
    }
    // A sign-up for the same address on another instance may come first.
    if (!insert.Step()) {
      return Failure("2021");
    }
    account = insert.Int(0);
  }
  return Ok({{"result", {NewSession(account), user_code}}});
}

json ServiceCore::GetUserInfo(std::int64_t account) {
  auto find = db_->Prepare(
      "SELECT email, first_name, last_name, title, street1, street2, city, "
      "state, zip, card_name, card_masked, card_month, card_year, card_zip "
      "FROM accounts WHERE id = ?");
  find.Bind(1, account);
  if (!find.Step()) {
    return Failure(kSessionCode);
  }
  std::vector<std::string> row;
  for (int i = 0; i < 14; ++i) {
    row.push_back(find.Text(i));
  }
  const bool has_address =
      !row[4].empty() && !row[6].empty() && !row[7].empty() && !row[8].empty();
  const bool has_card = !row[10].empty();
  return Ok({
      {"accountType", has_address && has_card ? "FUL" : "LTE"},
      {"profile", {row[0], row[1], row[2], "", ""}},
      {"address",
       {row[3], row[1], row[2], row[4], row[5], row[6], row[7], row[8]}},
      {"card", {row[9], row[10], row[11], row[12], row[13]}},
  });
}

json ServiceCore::UpdateUserAddress(std::int64_t account,
                                    const json& request,
                                    Lock& lock) {
  std::string stored_email, hash, user_code, first_name, last_name, stored_card;
  {  // The statement ends before the lock is given up.
    auto find = db_->Prepare(
        "SELECT email, password_hash, user_code, first_name, last_name, "
        "card_masked FROM accounts WHERE id = ?");
    find.Bind(1, account);
    if (!find.Step()) {
      return Failure(kSessionCode);
    }
    stored_email = find.Text(0);
    hash = find.Text(1);
    user_code = find.Text(2);
    first_name = find.Text(3);
    last_name = find.Text(4);
    stored_card = find.Text(5);
  }
  if (Lowered(Trim(Text(request, "email"))) != Lowered(stored_email)) {
    return Failure("2006");
  }
  if (!PasswordIs(hash, Text(request, "password"), lock)) {
    return Failure("2007");
  }

  auto address = TextArray(request, "address");
  address.resize(std::max<size_t>(address.size(), 8));
  for (auto& cell : address) {
    cell = Trim(cell);
  }
  const AddressFields fields{address[3], address[4], address[5],
                             address[6], address[7], ""};
  const bool has_address = !AddressIsEmpty(fields);
  if (has_address) {
    if (auto code = CheckAddress(fields); !code.empty()) {
      return Failure(code);
    }
  }
  const bool card_changed = Flag(request, "cardChanged");
  auto card = TextArray(request, "card");
  card.resize(std::max<size_t>(card.size(), 5));
  for (auto& cell : card) {
    cell = Trim(cell);
  }
  const bool has_card = !(card[1].empty() && card[2].empty() &&
                          card[3].empty() && card[4].empty());
  std::string masked = stored_card;
  CardFields card_fields{
      card[0].empty() ? first_name + " " + last_name : card[0], card[1],
      ParseMonth(card[2], 1), card[3]};
  if (card_changed && has_card) {
    const bool keeps_number = !stored_card.empty() && card[1] == stored_card;
    if (keeps_number) {
      // The stored number stands; check the rest with a number that passes.
      card_fields.number = "4111111111111111";
    }
    const YearMonth today = Today(Now());
    if (auto code = CheckCard(card_fields, card[4], today.year, today.month);
        !code.empty()) {
      return Failure(code);
    }
    if (!keeps_number) {
      masked = MaskCardNumber(CardDigits(card[1]));
    }
  }

  Transaction transaction(*db_);
  db_->Prepare(
         "UPDATE accounts SET street1 = ?, street2 = ?, city = ?, state = ?, "
         "zip = ? WHERE id = ?")
      .Bind(1, has_address ? fields.street1 : "")
      .Bind(2, has_address ? fields.street2 : "")
      .Bind(3, has_address ? fields.city : "")
      .Bind(4, has_address ? fields.state : "")
      .Bind(5, has_address ? fields.zip : "")
      .Bind(6, account)
      .Run();
  if (!address[0].empty()) {
    db_->Prepare("UPDATE accounts SET title = ? WHERE id = ?")
        .Bind(1, address[0])
        .Bind(2, account)
        .Run();
  }
  if (!address[1].empty() && !address[2].empty() &&
      CheckName(address[1], "2001").empty() &&
      CheckName(address[2], "2002").empty()) {
    db_->Prepare(
           "UPDATE accounts SET first_name = ?, last_name = ? WHERE id = ?")
        .Bind(1, address[1])
        .Bind(2, address[2])
        .Bind(3, account)
        .Run();
  }
  if (card_changed) {
    db_->Prepare(
           "UPDATE accounts SET card_name = ?, card_masked = ?, card_month = "
           "?, card_year = ?, card_zip = ? WHERE id = ?")
        .Bind(1, has_card ? card_fields.name : "")
        .Bind(2, has_card ? masked : "")
        .Bind(3, has_card ? std::to_string(card_fields.month - 1) : "")
        .Bind(4, has_card ? card[3] : "")
        .Bind(5, has_card ? card[4] : "")
        .Bind(6, account)
        .Run();
  }
  db_->Prepare("DELETE FROM sessions WHERE code = ?")
      .Bind(1, Text(request, "authCode"))
      .Run();
  const std::string session = NewSession(account);
  transaction.Commit();
  return Ok({{"session", {session, user_code}}});
}

}  // namespace qbpd::service
