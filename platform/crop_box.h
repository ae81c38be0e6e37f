#ifndef QBPD_PLATFORM_CROP_BOX_H_
#define QBPD_PLATFORM_CROP_BOX_H_

namespace qbpd {

// A rectangle in pixels of the upright photo (fractions kept).
struct CropRect {
  double x = 0;
  double y = 0;
  double w = 0;
  double h = 0;
};

// The smallest box that still prints well at the print size an aspect stands
// for, in the box's orientation: 900 x 600 pixels for 6 : 4 (4 x 6 prints)
// and 7 : 5 (5 x 7), 1280 x 1024 for 10 : 8 (8 x 10), 419 x 279 for the
// wallets' 3 : 2, and their turns for the upright aspects. Any other aspect
// is held to the smallest print's rule (900 x 600 by its shape). A box is
// printable when it is at least as wide and as high as this.
struct CropMinimum {
  double w = 0;
  double h = 0;
};
CropMinimum MinimumCropSize(int aspect_x, int aspect_y);

// Where a press lands on the crop box: which part of it the drag takes.
enum class CropGrip {
  kNone,  // outside the box
  kMove,  // inside: the box moves
  kLeft,
  kRight,
  kTop,
  kBottom,
  kTopLeft,
  kTopRight,
  kBottomLeft,
  kBottomRight,
};

// The crop box on a photo: made at a fixed aspect, moved and resized by the
// mouse at that aspect, never leaving the photo and never smaller than the
// printable minimum. No pixels: this is the geometry the photo view keeps.
class CropBoxTool {
 public:
  // Puts the largest box of `aspect_x` : `aspect_y` centred on a photo of
  // `photo_w` x `photo_h`. False, and no box, when the terms are not positive
  // or that box is below the printable minimum.
  bool Start(int photo_w, int photo_h, int aspect_x, int aspect_y);
  void Reset();
  bool Active() const { return active_; }
  const CropRect& Box() const { return box_; }

  // The part of the box at (x, y); edges and corners are taken within
  // `grip` pixels of the photo (the view passes a few screen pixels' worth).
  CropGrip GripAt(double x, double y, double grip) const;

  // Starts a drag at (x, y); False (nothing taken) outside the box.
  bool Press(double x, double y, double grip);
  // Follows the drag to (x, y). Returns True when the pointer asked for a
  // box below the printable minimum: the box then stays at the minimum.
  bool Drag(double x, double y);
  void Release() { grip_ = CropGrip::kNone; }
  bool Dragging() const { return grip_ != CropGrip::kNone; }

 private:
  // The box anchored at the fixed point (ax, ay), growing `w` wide towards
  // `dir_x` (-1 left, +1 right, 0 centred on ax) and likewise down; `w`
  // already within the limits.
  CropRect Anchored(double ax, double ay, int dir_x, int dir_y, double w) const;

  bool active_ = false;
  double photo_w_ = 0;
  double photo_h_ = 0;
  double aspect_ = 1;  // width over height
  CropMinimum minimum_;
  CropRect box_;
  // The drag in progress: its grip, the box and the pointer at its start.
  CropGrip grip_ = CropGrip::kNone;
  CropRect start_box_;
  double start_x_ = 0;
  double start_y_ = 0;
};

}  // namespace qbpd

#endif  // QBPD_PLATFORM_CROP_BOX_H_
