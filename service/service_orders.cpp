// Prices and orders: the price list, placing an order and confirming it.
#include "service/checks.h"
#include "service/core_support.h"
#include "service/db.h"
#include "service/pricing.h"
#include "service/request.h"
#include "service/service_core.h"

namespace qbpd::service {

using nlohmann::json;

namespace {

std::map<int, std::vector<Tier>> LoadTiers(Db& db) {
  std::map<int, std::vector<Tier>> tiers;
  auto rows = db.Prepare(
      "SELECT size, lower, upper, price FROM price_tiers "
      "ORDER BY size, lower");
  while (rows.Step()) {
    tiers[static_cast<int>(rows.Int(0))].push_back(
        {static_cast<int>(rows.Int(1)), static_cast<int>(rows.Int(2)),
         ParseAmount(rows.Text(3))});
  }
  return tiers;
}

std::vector<Band> LoadBands(Db& db) {
  std::vector<Band> bands;
  auto rows = db.Prepare(
      "SELECT lower, upper, cost FROM shipping_bands ORDER BY position");
  while (rows.Step()) {
    bands.push_back({static_cast<int>(rows.Int(0)),
                     static_cast<int>(rows.Int(1)), ParseAmount(rows.Text(2))});
  }
  return bands;
}

}  // namespace

json ServiceCore::GetPriceList() {
  json tiers = json::array();
  for (const auto& [size, rows] : LoadTiers(*db_)) {
    json table = json::array();
    for (const auto& tier : rows) {
      table.push_back({std::to_string(tier.lower), std::to_string(tier.upper),
                       FormatAmount(tier.price)});
    }
    tiers.push_back({std::to_string(size), table});
  }
  json bands = json::array();
  for (const auto& band : LoadBands(*db_)) {
    bands.push_back({std::to_string(band.lower), std::to_string(band.upper),
                     FormatAmount(band.cost)});
  }
  return Ok({{"priceTiers", tiers}, {"shippingBands", bands}});
}

json ServiceCore::PlaceOrder(std::int64_t account, const json& request) {
  const std::vector<OrderLine> lines = OrderLines(request);
  QuoteInput input;
  for (const auto& line : lines) {
    std::array<int, kSizeCount> quantities{};
    for (size_t row = 0; row < line.quantities.size(); ++row) {
      quantities[row] = ParseQuantity(line.quantities[row]);
    }
    input.lines.push_back(quantities);
  }
  std::vector<std::string> keys;
  const json index = OrderIndex(request, &keys);
  const auto ship_to = TextArray(request, "shipTo");

  input.tiers = LoadTiers(*db_);
  input.bands = LoadBands(*db_);
  input.coupon_code = Trim(Text(request, "couponCode"));
  if (!input.coupon_code.empty()) {
    auto find = db_->Prepare(
        "SELECT code, percent, value, min_order, expired FROM coupons WHERE "
        "code = ?");
    find.Bind(1, input.coupon_code);
    if (find.Step()) {
      input.coupon =
          Coupon{find.Text(0), find.Int(1) != 0, ParseAmount(find.Text(2)),
                 ParseAmount(find.Text(3)), find.Int(4) != 0};
    }
  }
  auto account_row =
      db_->Prepare("SELECT state, free_used FROM accounts WHERE id = ?");
  account_row.Bind(1, account);
  if (!account_row.Step()) {
    return Failure(kSessionCode);
  }
  input.tax_state = account_row.Text(0);
  if (ship_to.size() > 6 && !Trim(ship_to[6]).empty()) {
    input.tax_state = Trim(ship_to[6]);
  }
  if (account_row.Int(1) == 0) {
    auto offers = db_->Prepare("SELECT size, quantity FROM free_offers");
    while (offers.Step()) {
      input.free_offers.push_back(
          {static_cast<int>(offers.Int(0)), static_cast<int>(offers.Int(1))});
    }
  }
  auto tax = db_->Prepare("SELECT percent FROM tax WHERE state = ?");
  tax.Bind(1, input.tax_state);
  if (tax.Step()) {
    input.tax_percent = ParseAmount(tax.Text(0));
  }

  const Quote quote = PriceOrder(input);

  json out_lines = json::array();
  for (size_t i = 0; i < lines.size(); ++i) {
    json rows = json::array();
    for (int row = 0; row < kSizeCount; ++row) {
      const int quantity = input.lines[i][row];
      const double price = quote.unit_price[row];
      rows.push_back({std::to_string(quantity), FormatAmount(price),
                      FormatAmount(RoundCents(price * quantity))});
    }
    out_lines.push_back({{"key", lines[i].key}, {"rows", rows}});
  }
  json size_totals = json::array();
  for (int row = 0; row < kSizeCount; ++row) {
    size_totals.push_back({std::to_string(quote.size_quantity[row]),
                           FormatAmount(quote.unit_price[row]),
                           FormatAmount(quote.size_amount[row])});
  }
  json free_prints = json::array();
  for (const auto& free : quote.free_prints) {
    free_prints.push_back({std::to_string(free.quantity),
                           FormatAmount(free.value), free.size_text});
  }
  if (free_prints.empty()) {
    free_prints.push_back({"", "", ""});
  }
  const json coupon_result = {input.coupon_code, quote.coupon_label,
                              FormatAmount(quote.coupon_discount),
                              quote.coupon_applied ? "1" : "0"};
  const json order_tax = {{input.tax_state, FormatAmount(input.tax_percent),
                           FormatAmount(quote.tax)}};
  const json summary = {{"sizeTotals", size_totals},
                        {"freePrints", free_prints},
                        {"couponResult", coupon_result},
                        {"shipping", FormatAmount(quote.shipping)},
                        {"orderTax", order_tax},
                        {"costOfPrints", FormatAmount(quote.cost_of_prints)},
                        {"orderTotal", FormatAmount(quote.total)}};
  json out = summary;
  out["orderLines"] = out_lines;
  out["orderIndex"] = index;
  // An order without prints is only a price quote (the order dialog asks
  // for one when it opens with every quantity at 0): nothing is stored and
  // there is no order to confirm.
  if (quote.total_prints == 0) {
    out["orderId"] = "";
    return Ok(out);
  }
  const std::int64_t order = InsertReturningId(
      db_->Prepare("INSERT INTO orders (account_id, status, coupon, "
                   "photo_keys, summary, used_free, created) VALUES (?, "
                   "'quoted', ?, ?, ?, ?, ?) RETURNING id")
          .Bind(1, account)
          .Bind(2, quote.coupon_applied ? input.coupon_code : "")
          .Bind(3, json(keys).dump())
          .Bind(4, summary.dump())
          .BindInt(5, quote.free_prints.empty() ? 0 : 1)
          .Bind(6, Now()));
  out["orderId"] = std::to_string(order);
  return Ok(out);
}

json ServiceCore::ConfirmOrder(std::int64_t account, const json& request) {
  const auto order_id = ParseId(Trim(Text(request, "orderId")));
  if (!order_id) {
    return Failure("4001");
  }
  auto find = db_->Prepare(
      "SELECT coupon, photo_keys, used_free FROM orders WHERE id = ? AND "
      "account_id = ? AND status = 'quoted'");
  find.Bind(1, *order_id).Bind(2, account);
  if (!find.Step()) {
    return Failure("4001");
  }
  const std::string coupon = Trim(Text(request, "couponCode"));
  const std::string quoted_coupon = find.Text(0);
  // A coupon the quote refused is not held against the confirmation.
  if (!quoted_coupon.empty() && coupon != quoted_coupon) {
    return Failure("4004");
  }
  const auto keys = json::parse(find.Text(1));
  const bool used_free = find.Int(2) != 0;
  if (keys.empty()) {
    return Failure("4003");
  }
  for (const auto& key : keys) {
    const auto image = ParseImageId(key.get<std::string>());
    if (!image) {
      return Failure("4003");
    }
    auto owned = db_->Prepare(
        "SELECT photos.id FROM photos JOIN albums ON photos.album_id = "
        "albums.id WHERE photos.id = ? AND albums.account_id = ?");
    owned.Bind(1, *image).Bind(2, account);
    if (!owned.Step()) {
      return Failure("4003");
    }
  }
  Transaction transaction(*db_);
  {
    // Two confirmations of one order, on two instances at once, both got
    // this far; only the one whose update still finds it quoted confirms
    // it (PostgreSQL makes the other wait for its commit, then reads the
    // row again), and the other answers as for a confirmed order.
    auto confirm = db_->Prepare(
        "UPDATE orders SET status = 'confirmed' WHERE id = ? AND "
        "account_id = ? AND status = 'quoted' RETURNING id");
    confirm.Bind(1, *order_id).Bind(2, account);
    if (!confirm.Step()) {
      return Failure("4001");
    }
  }
  if (used_free) {
    db_->Prepare("UPDATE accounts SET free_used = 1 WHERE id = ?")
        .Bind(1, account)
        .Run();
  }
  transaction.Commit();
  return Ok();
}

}  // namespace qbpd::service
