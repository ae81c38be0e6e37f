// The share form's text rules that need no window: the recipients as typed,
// the entities of subject and message, the preview's album name, the
// result page's lines.
#include "online/frm_share_congrats.h"
#include "online/frm_share_info.h"

#include <gtest/gtest.h>

namespace qbpd {
namespace {

using List = std::vector<std::string>;

TEST(ShareTextsTest, RecipientsAreSplitTrimmedAndKeptOnceWhateverTheirCase) {
  // ";" as ",", a trailing separator cut, case-blind duplicates dropped.
  EXPECT_EQ(SplitRecipients("A@x.test; a@X.test;b@y.test;"),
            (List{"A@x.test", "b@y.test"}));
  // Without a comma the text is one entry as it stands.
  EXPECT_EQ(SplitRecipients("a@x.test"), (List{"a@x.test"}));
  EXPECT_EQ(SplitRecipients("a@x.test,"), (List{"a@x.test"}));
  // Only one trailing comma is cut; the empty parts go.
  EXPECT_EQ(SplitRecipients("a@x.test,,"), (List{"a@x.test"}));
  // Commas and blanks only: nothing remains.
  EXPECT_TRUE(SplitRecipients(" , ,  ").empty());
  EXPECT_EQ(SplitRecipients(" a@x.test ,  b@y.test "),
            (List{"a@x.test", "b@y.test"}));
}

TEST(ShareTextsTest, SubjectAndMessageTravelWithTheirEntities) {
  EXPECT_EQ(EncodeShareText("a<b&c>d"), "a&lt;b&amp;c&gt;d");
  // "&" goes first, so an entity typed by the user stays as typed.
  EXPECT_EQ(EncodeShareText("&lt;"), "&amp;lt;");
  EXPECT_EQ(EncodeShareText("plain"), "plain");
}

TEST(ShareTextsTest, ThePreviewShortensFromThirteenCharacters) {
  EXPECT_EQ(PreviewAlbumName("123456789012"), "123456789012");
  EXPECT_EQ(PreviewAlbumName("1234567890123"), "1234567890..");
  EXPECT_EQ(PreviewAlbumName(""), "");
  // Characters, not bytes: "é" is one.
  EXPECT_EQ(PreviewAlbumName("\xC3\xA9t\xC3\xA9 \xC3\xA0 Nice"),
            "\xC3\xA9t\xC3\xA9 \xC3\xA0 Nice");
  EXPECT_EQ(PreviewAlbumName("\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"
                             "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"
                             "\xC3\xA9"),
            "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"
            "\xC3\xA9\xC3\xA9..");
}

TEST(ShareTextsTest, TheResultListsAddressesInLowerCaseInLinesOf25) {
  EXPECT_EQ(ShareRecipientLines({"Bob@Example.test", "", "cy@x.test", ""}, 25),
            "bob@example.test\ncy@x.test");
  EXPECT_EQ(ShareRecipientLines({"a-very-long-address-for@example.test"}, 25),
            "a-very-long-address-for@e\nxample.test");
  EXPECT_EQ(ShareRecipientLines({"", ""}, 25), "");
}

}  // namespace
}  // namespace qbpd
