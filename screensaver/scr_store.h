#ifndef QBPD_SCREENSAVER_SCR_STORE_H_
#define QBPD_SCREENSAVER_SCR_STORE_H_

#include <string>
#include <string_view>
#include <vector>

namespace qbpd {

// The screensaver store: scr.ini, a profile file with a section "General"
// that lists the screensavers by name (Ssaver1 .. SsaverN, N being
// NumberOfSsavers; DefaultSsaver the current one; ScreensaverFileName the
// saver's file) and one section per screensaver, named by it, with its
// photos (Image1 .. ImageN, N being NumberofImages), ImageInterval in
// seconds and TransitionEffects (a sum of kEffect... bits). Section and key
// names match without regard to case; a screensaver's name is compared in
// upper case.
//
// Every change below is one atomic rewrite of the file: a crash leaves the
// old or the new file, never a mix. No change ever touches a photo file.

inline constexpr char kScrGeneral[] = "General";
inline constexpr char kScrFileNameKey[] = "ScreensaverFileName";
inline constexpr char kScrCountKey[] = "NumberOfSsavers";
inline constexpr char kScrDefaultKey[] = "DefaultSsaver";
inline constexpr char kScrNameKeyPrefix[] = "Ssaver";
inline constexpr char kScrImageCountKey[] = "NumberofImages";
inline constexpr char kScrImageKeyPrefix[] = "Image";
inline constexpr char kScrIntervalKey[] = "ImageInterval";
inline constexpr char kScrEffectsKey[] = "TransitionEffects";
// What a new scr.ini names as the saver's file.
inline constexpr char kScrDefaultFileName[] = "Quillbay.scr";
// A new screensaver's interval and effects (all four).
inline constexpr int kScrNewInterval = 10;
inline constexpr int kScrAllEffects = 15;

// The TransitionEffects bits, with the code each gives the player.
inline constexpr int kEffectFromCentre = 8;   // "3001"
inline constexpr int kEffectDiagonal = 4;     // "2007"
inline constexpr int kEffectTopToBottom = 2;  // "7002"
inline constexpr int kEffectLeftToRight = 1;  // "2000"
inline constexpr char kCodeFromCentre[] = "3001";
inline constexpr char kCodeDiagonal[] = "2007";
inline constexpr char kCodeTopToBottom[] = "7002";
inline constexpr char kCodeLeftToRight[] = "2000";

// A number as the program reads one from its files: the leading decimal
// digits of the trimmed text (after an optional sign), 0 when there are
// none.
int ScrNumber(std::string_view text);

// The effect codes of a TransitionEffects value, joined by ">": at most four
// passes, each taking 3001 (less 8) when the value is 15 or more, else 2007
// (less 4) from 4, 7002 (less 2) from 2, 2000 (less 1) from 1, else
// stopping. The first test is against 15 on purpose: 8 gives "2007>2007",
// 12 "2007>2007>2007", 15 "3001>2007>7002>2000"; 0 gives "".
std::string DecodeTransitionEffects(int value);

// The four check boxes of the effects.
struct EffectBoxes {
  bool from_centre = false;
  bool diagonal = false;
  bool top_to_bottom = false;
  bool left_to_right = false;
  bool operator==(const EffectBoxes&) const = default;
};
// The boxes a value sets, by the same passes (a saved 8 shows as Diagonal).
EffectBoxes DecodeEffectBoxes(int value);
// The sum of the bits of the boxes that are set.
int EffectsValue(const EffectBoxes& boxes);
// The codes of the boxes that are set, in the order 3001, 2007, 7002, 2000,
// joined by ">".
std::string EffectCodes(const EffectBoxes& boxes);

// Makes scr.ini when it is missing: ScreensaverFileName "Quillbay.scr",
// NumberOfSsavers "0", DefaultSsaver empty. False when it can't be made.
bool MakeScrIniIfMissing(const std::string& ini);

// The names Ssaver1 .. SsaverN, N being NumberOfSsavers (0 when missing).
std::vector<std::string> ReadScreensaverNames(const std::string& ini);
// Whether `name` is one of `names`, case ignored.
bool HasScreensaverName(const std::vector<std::string>& names,
                        std::string_view name);
// The photos Image1 .. ImageN of a screensaver, N being its NumberofImages;
// an empty or missing entry is left out.
std::vector<std::string> ReadScreensaverPhotos(const std::string& ini,
                                               std::string_view name);

// The repair on opening: for each listed screensaver the photos whose files
// exist are written back as Image1 upward, without gaps, with their count;
// a screensaver with none left loses its section and its name, the names
// close up (Ssaver keys renumbered, NumberOfSsavers lowered) and
// DefaultSsaver is emptied when it named it. A photo counts as there when
// PhotoFileExists says so. True when nothing needed writing or the write
// succeeded.
bool RepairScreensavers(const std::string& ini);
// Whether a regular file is at `path`.
bool PhotoFileExists(const std::string& path);

// Creates a screensaver: NumberOfSsavers one more, Ssaver<count> the name,
// its section with the photos as Image1 upward, NumberofImages, interval 10
// and effects 15. The new count in `count`. False when it couldn't be
// written (the file is then as it was).
bool CreateScreensaver(const std::string& ini,
                       const std::string& name,
                       const std::vector<std::string>& photos,
                       int& count);

// Adds to a screensaver each of `photos` that it doesn't hold yet (paths
// compared in upper case), after its last photo; NumberofImages follows.
// `added` says how many were new.
bool AddPhotosToScreensaver(const std::string& ini,
                            const std::string& name,
                            const std::vector<std::string>& photos,
                            int& added);

// Writes a screensaver's photos as Image1 upward (entries beyond them go),
// NumberofImages, ImageInterval and TransitionEffects.
bool SaveScreensaver(const std::string& ini,
                     const std::string& name,
                     const std::vector<std::string>& photos,
                     int interval,
                     int effects);

// Deletes a screensaver: its section, its name (the later Ssaver keys move
// down one, the last goes), NumberOfSsavers one less, DefaultSsaver emptied
// when it named it.
bool DeleteScreensaver(const std::string& ini, const std::string& name);

// Writes the preview's scratch file: one section `name` with NumberOfImages
// and Image1 upward, replacing whatever the file held.
bool WriteTempScr(const std::string& temp_ini,
                  const std::string& name,
                  const std::vector<std::string>& photos);

}  // namespace qbpd

#endif  // QBPD_SCREENSAVER_SCR_STORE_H_
