// The drawing helpers the library's controls share: colour resolution and blending, the
// four-corner gradient, text measuring in twips, border styles through the window's style
// bits, the focus rectangle, and system metrics in twips. They hold no state.
#pragma once

#include "korvex/runtime/OleColor.h"

#include <QFont>
#include <QPainter>
#include <QString>
#include <QWidget>

#include <cstdint>

namespace korvex {

enum ZqBorderStyles : int { bsNone = 0, bsRaisedLikeAButton = 1, bsFlat = 2, bsSunkLikeAPictureBox = 1001 };
enum BackStyles : int { bsTransparent = 0, bsOpaque = 1 };
enum VerticalAlignments : int { vaTop = 0, vaCenter = 1, vaBottom = 2 };

// RGB for either kind of OLE colour. When the lookup fails the user is told ("Error occurred in
// .GetRGBColor.") and the error goes on to the caller.
OleColor GetRGBColor(OleColor color);
// Channels as the low bytes of the colour and of its signed quotients by 256 and 65536; no
// system colour is translated.
void SplitRGB(std::int32_t color, int& red, int& green, int& blue);
// percentA percent of colourA and the rest of colourB, each channel rounded half to even.
OleColor BlendColours(OleColor colourA, short percentA, OleColor colourB);
// Fills left..right by top..bottom (pixels) with the two-triangle gradient of four corner
// colours (RGB), the triangles sharing the top-left to bottom-right diagonal.
void DrawGradient(QPainter& painter, int left, int top, int right, int bottom, OleColor colourTL, OleColor colourTR,
                  OleColor colourBL, OleColor colourBR);
// Measures text in the font: width and height (twips) come back as the text's extent; with word
// wrap the text is broken to the width given in.
void CalcTextSize(const QString& text, int& width, int& height, bool wordWrap, const QFont& font);
// Sets (remove False) or clears (remove True) the style bits of a border style on a window.
void SetBorderStyle(QWidget* window, int style, bool remove);

// The system's focus rectangle: a dotted frame (every other pixel, in a checkerboard from the
// surface's origin) inverted onto the surface, so that drawing it twice removes it. Left and
// top are the first pixels of the frame, right and bottom the first ones past it.
void DrawFocusRect(QPainter& painter, int left, int top, int right, int bottom);

int EdgeWidthTwips();
int EdgeHeightTwips();
int BorderWidthTwips();
int BorderHeightTwips();
int VScrollWidthTwips();
bool MouseButtonsSwapped();

}  // namespace korvex
