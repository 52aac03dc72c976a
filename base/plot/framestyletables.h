// The tables behind the frame style records, shared by the two files of the frame style:
// framestyletables.cpp holds the tables, as style records that the set-value walk
// (SetStyleRecordValue, GetStyleRecordValue) sets and reads through; framestyle.cpp holds what
// the frame adds to that walk. Nothing else includes this header.
// Relies on: framestyle (the records), setvalue (style records, input rules).
#pragma once

#include "base/macro/setvalue.h"
#include "base/plot/framestyle.h"

// The frame style: one block per major row of a record, a numbered block (the group, 1 to 4)
// for the grouped majors. The map majors are not in it: see the map records below.
const StyleRecord_s &GetFrameStyleRecord();
// The records of one field map and one line map; the frame style holds their templates.
const StyleRecord_s &GetFieldMapStyleRecord();
const StyleRecord_s &GetLineMapStyleRecord();

// ---- in framestyle.cpp ----------------------------------------------------------------------

// Unit suffixes into frame units: fractions of the width or the height of the frame being set,
// or inches on the paper. A pixel is 1/96 inch.
bool ConvertSuffixToFrameWidths(double *value, int suffix);
bool ConvertSuffixToFrameHeights(double *value, int suffix);
bool ConvertSuffixToPaperInches(double *value, int suffix);

// The input rules of a text height (the record is the TextShape_s): they follow its SizeUnits.
void FrameTextHeightRules(const void *textShape, InputSpecs_s *rules);

// The frame's rectangle (the target is the Rect_s) as XYPOS X and Y, WIDTH and HEIGHT. Moving
// the position moves the opposite edges along, which must stay within the same rules.
double ReadFrameLeft(const void *rect);
double ReadFrameTop(const void *rect);
double ReadFrameWidth(const void *rect);
double ReadFrameHeight(const void *rect);
bool MoveFrameLeft(void *rect, double value, const InputSpecs_s &rules);
bool MoveFrameTop(void *rect, double value, const InputSpecs_s &rules);
bool StoreFrameWidth(void *rect, double value, const InputSpecs_s &rules);
bool StoreFrameHeight(void *rect, double value, const InputSpecs_s &rules);
