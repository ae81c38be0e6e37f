// Which names are photos: the allocation-free test the folder load runs on
// every name gives the same answers as the extension taken apart.
#include "core/quil_mod.h"

#include <gtest/gtest.h>

#include <string>

namespace qbpd {
namespace {

TEST(PhotoExtensionTest, EveryTypeInAnyCaseAndNothingElse) {
  struct Case {
    const char* path;
    bool photo;
  };
  const Case cases[] = {
      {"a.jpg", true},
      {"/p/A.JPEG", true},
      {"/p/b.JpE", true},
      {"/p/c.bmp", true},
      {"/p/d.Png", true},
      {"/p/e.tif", true},
      {"/p/f.TIFF", true},
      {"/p/g.gif", false},
      {"/p/h.jp", false},
      {"/p/i.jpgx", false},
      {"/p/j.jpeg2", false},
      {"/p/k.", false},
      {"/p/noext", false},
      {"/p.jpg/noext", false},  // the folder's dot is not the name's
      {"/p/.jpg", true},        // a hidden file's name is its extension
      {"/p/two.dots.jpg", true},
      {"/p/jpg", false},
      {"", false},
      {"/p/\xc3\xa9t\xc3\xa9.JPG", true},
      {"/p/x.j\xc3\xa9", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(HasPhotoExtension(c.path), c.photo) << c.path;
    EXPECT_EQ(HasPhotoExtension(c.path),
              IsPhotoExtension(UpperExtension(c.path)))
        << c.path;
  }
}

}  // namespace
}  // namespace qbpd
