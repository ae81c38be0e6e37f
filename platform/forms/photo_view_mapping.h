#ifndef QBPD_PLATFORM_FORMS_PHOTO_VIEW_MAPPING_H_
#define QBPD_PLATFORM_FORMS_PHOTO_VIEW_MAPPING_H_

namespace qbpd {

// Where the photo stands in a photo view, without a toolkit: the one
// arithmetic that the desktop widget and the scripted user share. Three
// measures meet here: view pixels (the drawing area, the widget less its
// scroll bars), shown pixels (the photo at its zoom) and photo pixels (the
// upright photo, as the editor's crop box and red-eye clicks count them).
struct PhotoViewMapping {
  int view_width = 0;  // the drawing area, in view pixels
  int view_height = 0;
  int shown_width = 0;  // the photo at its zoom
  int shown_height = 0;
  int photo_width = 0;  // the upright photo
  int photo_height = 0;
  int scroll_x = 0;  // scroll bar values, in shown pixels
  int scroll_y = 0;

  // Where shown pixel (0, 0) lands in the view: centred on an axis where the
  // photo is smaller than the view, moved by the scroll bar where it is
  // larger.
  int OriginX() const;
  int OriginY() const;
  // Photo pixels per shown pixel on each axis; 1 without a photo.
  double ScaleX() const;
  double ScaleY() const;
  // View pixels to photo pixels and back; points outside the photo map to
  // coordinates outside 0..photo size.
  double ViewToPhotoX(double view_x) const;
  double ViewToPhotoY(double view_y) const;
  double PhotoToViewX(double photo_x) const;
  double PhotoToViewY(double photo_y) const;
};

// Which scroll bars a photo view `widget_width` x `widget_height` pixels
// needs for a photo shown at `shown_width` x `shown_height`, with bars `bar`
// pixels thick, and the drawing area left.
struct PhotoViewScrollBars {
  bool horizontal = false;
  bool vertical = false;
  int view_width = 0;
  int view_height = 0;
};
PhotoViewScrollBars LayOutPhotoViewScrollBars(int widget_width,
                                              int widget_height,
                                              int shown_width,
                                              int shown_height,
                                              int bar);

}  // namespace qbpd

#endif  // QBPD_PLATFORM_FORMS_PHOTO_VIEW_MAPPING_H_
