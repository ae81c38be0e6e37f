#include "core/keyed_collection.h"
#include "core/ordered_dictionary.h"
#include "core/session.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

TEST(OrderedDictionaryTest, KeepsInsertionOrderThroughRemovals) {
  OrderedDictionary<int, std::string> dic;
  for (int k : {5, 1, 9, 3}) {
    dic.Add(k, "p" + std::to_string(k));
  }
  dic.Remove(1);
  dic.Add(1, "again");
  EXPECT_EQ(dic.Keys(), (std::vector<int>{5, 9, 3, 1}));
  EXPECT_EQ(dic.Items(), (std::vector<std::string>{"p5", "p9", "p3", "again"}));
  EXPECT_EQ(dic.Count(), 4);
  EXPECT_TRUE(dic.Exists(9));
  EXPECT_FALSE(dic.Exists(2));
}

TEST(OrderedDictionaryTest, MissingAndDuplicateKeysAreErrors) {
  OrderedDictionary<int, std::string> dic;
  dic.Add(1, "a");
  struct Case {
    std::function<void()> call;
    int number;
  };
  for (const Case& c : std::vector<Case>{
           {[&] { dic.Add(1, "b"); }, kErrKeyExists},
           {[&] { dic.Item(2); }, kErrDictionaryNoKey},
           {[&] { dic.Remove(2); }, kErrDictionaryNoKey},
       }) {
    try {
      c.call();
      ADD_FAILURE() << "no error";
    } catch (const RuntimeError& e) {
      EXPECT_EQ(e.number(), c.number) << e.what();
    }
  }
  EXPECT_EQ(dic.Item(1), "a");  // the failed Add changed nothing
  dic.Set(2, "set adds");
  EXPECT_EQ(dic.Keys(), (std::vector<int>{1, 2}));
}

TEST(OrderedDictionaryTest, TextModeIgnoresCaseAndRenameKeepsPlace) {
  OrderedDictionary<std::string, int> dic(CompareMode::kText);
  dic.Add("Alpha", 1);
  dic.Add("beta", 2);
  EXPECT_TRUE(dic.Exists("ALPHA"));
  EXPECT_THROW(dic.Add("BETA", 3), RuntimeError);
  dic.RenameKey("alpha", "Gamma");
  EXPECT_EQ(dic.Keys(), (std::vector<std::string>{"Gamma", "beta"}));
  EXPECT_EQ(dic.Item("GAMMA"), 1);

  OrderedDictionary<std::string, int> binary;
  binary.Add("a", 1);
  binary.Add("A", 2);  // binary mode: different keys
  EXPECT_EQ(binary.Count(), 2);
}

TEST(KeyedCollectionTest, PositionsCountFromOneAndKeysIgnoreCase) {
  KeyedCollection<std::string> col;
  col.Add("c:/one", "ONE");
  col.Add("c:/two");
  col.Add("c:/zero", "zero", /*before=*/1);
  col.Add("c:/after", "", 0, /*after=*/1);
  EXPECT_EQ(col.Items(), (std::vector<std::string>{"c:/zero", "c:/after",
                                                   "c:/one", "c:/two"}));
  EXPECT_EQ(col.Item("one"), "c:/one");
  EXPECT_TRUE(col.Exists("ZERO"));
  col.Remove("One");
  col.Remove(1);
  EXPECT_EQ(col.Items(), (std::vector<std::string>{"c:/after", "c:/two"}));
  EXPECT_EQ(col.Count(), 2);
}

TEST(KeyedCollectionTest, BadPositionsAndKeysAreErrors) {
  KeyedCollection<int> col;
  col.Add(1, "k");
  struct Case {
    std::function<void()> call;
    int number;
  };
  for (const Case& c : std::vector<Case>{
           {[&] { col.Item(0); }, kErrSubscript},
           {[&] { col.Item(2); }, kErrSubscript},
           {[&] { col.Remove(5); }, kErrSubscript},
           {[&] { col.Item("nope"); }, kErrInvalidCall},
           {[&] { col.Add(2, "K"); }, kErrKeyExists},
       }) {
    try {
      c.call();
      ADD_FAILURE() << "no error";
    } catch (const RuntimeError& e) {
      EXPECT_EQ(e.number(), c.number) << e.what();
    }
  }
  EXPECT_EQ(col.Count(), 1);
}

TEST(SessionTest, ValuesAreReachableByName) {
  Session s;
  s.Set("gsSelectedFolder", "/home/ann/Pictures/");
  s.Set("giCurrentOperation", "11");
  s.Set("gbLoadInProgress", true);
  s.gdicPhotoList.Add(0, "/a.jpg");
  s.gdicPhotoList.Add(1, "/b.jpg");
  EXPECT_EQ(s.gsSelectedFolder, "/home/ann/Pictures/");
  EXPECT_EQ(s.giCurrentOperation, 11);
  EXPECT_TRUE(s.Get("gbLoadInProgress").ToBool());
  EXPECT_EQ(s.Get("gdicPhotoList.Count").ToLong(), 2);
  EXPECT_EQ(s.Get("gdicPhotoList(1)").ToText(), "/b.jpg");
  EXPECT_THROW(s.Get("gdicPhotoList(7)"), RuntimeError);
  EXPECT_THROW(s.Get("gsNothing"), RuntimeError);
}

}  // namespace
}  // namespace qbpd
