// The tables behind the frame style records, shared by the two files of the frame style:
// framestyletables.cpp holds the tables, framestyle.cpp the walk that sets and reads through them.
// Nothing else includes this header.
// A table lists the rows of one record: a leaf row says how its value is checked and where it
// lives in the record; a parent row names the record below it (and, for a numbered parent, how
// many there are); a splice row takes another record's rows in as if they stood in its block.
// Relies on: framestyle (the records).
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/plot/framestyle.h"

// Which unit suffixes a double takes, and into what they turn the value.
enum FrameStyleUnit_e {
    FrameStyleUnit_None = 0,
    FrameStyleUnit_FrameX = 1,  // fraction of the frame width
    FrameStyleUnit_FrameY = 2,  // fraction of the frame height
    FrameStyleUnit_Paper = 3    // inches on the paper
};

// Range in stored units. Adjust turns a stored value into its macro form: a factor for
// doubles, an offset for integers (1 for the numbers that macros give from one).
struct FrameStyleValueSpec_s {
    bool IsInteger;
    double Min, Max;
    double Adjust;
    FrameStyleUnit_e Suffix;
};

enum FrameStyleRowKind_e {
    FrameStyleRowKind_Sub,         // a parent: the rows of Sub below it
    FrameStyleRowKind_Splice,      // no row of its own: Sub's rows stand in this block
    FrameStyleRowKind_Bool,
    FrameStyleRowKind_Enum,        // the row's enumerated set decides what is valid
    FrameStyleRowKind_Int,
    FrameStyleRowKind_Double,
    FrameStyleRowKind_String,
    FrameStyleRowKind_TextHeight,  // the target is the TextShape_s
    FrameStyleRowKind_RectX,       // the target is the frame's Rect_s: XYPOS X moves both X edges
    FrameStyleRowKind_RectY,       // XYPOS Y moves both Y edges
    FrameStyleRowKind_RectWidth,   // the right edge
    FrameStyleRowKind_RectHeight   // the bottom edge
};

struct FrameStyleTable_s;

struct FrameStyleRow_s {
    int16_t Row;  // set-value row; -1 for a splice
    FrameStyleRowKind_e Kind;
    const FrameStyleValueSpec_s *Rules;          // Int, Double and the rectangle rows
    void *(*Locate)(void *record, int number);  // the value, or the record below a parent
    const FrameStyleTable_s *Sub;
    int NumberCount;          // a numbered parent: 1 to NumberCount follows it in the path
    const char *NumberError;  // said when that number is out of range
};

struct FrameStyleTable_s {
    const FrameStyleRow_s *Rows;
    size_t Count;
};

// A major row of the frame style: the record it addresses, and for the grouped majors how many
// groups follow it and what is said for a group out of range. A map major has the map set in
// path[1]; the frame style holds the template.
struct FrameStyleMajor_s {
    int16_t Row;
    const FrameStyleTable_s *Table;
    void *(*Locate)(FrameStyle_s *style, int group);
    int NumGroups;
    const char *GroupError;
    bool HasMapSet;
};

// The record of a major row, or null for a row that is not one of the frame style.
const FrameStyleMajor_s *FindFrameStyleMajor(int row);
// The check of a text height: it follows the units the shape is sized in.
const FrameStyleValueSpec_s &FrameStyleTextHeightSpec(int sizeUnits);
// The tables of one field map and one line map.
const FrameStyleTable_s &GetFieldMapStyleTable();
const FrameStyleTable_s &GetLineMapStyleTable();
