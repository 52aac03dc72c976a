// Compressed macro commands. Macro text is read a command at a time and compressed: every command
// word becomes its table index ($ action, ! control, @ set-value row) and every enumerated value
// its integer, so that running a command needs no name lookups. This module reads and compresses
// commands, writes them back as text, picks compressed commands apart for the command parsers,
// holds the raw data sections some commands carry, and reports macro errors.
//   macrocomp.cpp  reading and compressing, command lists, raw data sections, ErrBadMacro
//   macroscan.cpp  scanning compressed text, numbers, uncompressing, raw data parsers
// Relies on: vocab (the tables), expr (parenthesised values), kernel (errors, sets, strings).
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "base/kernel/set.h"
#include "base/kernel/types.h"
#include "base/macro/vocab.h"

// A compressed, expanded or uncompressed command lives in a buffer of 120,000 bytes: at most
// 119,999 characters and the terminator. A physical line of a macro file has the same bound.
constexpr int MaxMacroCommandLength = 119999;
// A string in a command must stay under 119,996 characters.
constexpr int MaxMacroStringLength = 119995;
// The longest name of a macro variable, between its bars.
constexpr int MaxMacroVarNameLength = 30;
// The largest member a set of a macro command may hold (one-based). No entity a set names comes
// near it (zones and variables stop at 32,700, frames at 2,048, every line map carries a style of
// its own), and a set of that size still takes only 2 MB.
constexpr LgIndex_t MaxMacroSetMember = 16777216;
// The number of entries a raw colour map may have.
constexpr int MaxRawColorMapEntries = 800;
// The number of segments of a line segment geometry in raw data.
constexpr int MaxRawGeomSegments = 50;

// How a value is assigned. A unit suffix on a number turns a simple = into one of the
// conversions. The values are those of enumerated set 239.
enum AssignOp_e : int8_t {
    AssignOp_Equals = 0,
    AssignOp_PlusEquals = 1,
    AssignOp_MinusEquals = 2,
    AssignOp_TimesEquals = 3,
    AssignOp_DivideEquals = 4,
    AssignOp_ConvertFromCm = 5,
    AssignOp_ConvertFromIn = 6,
    AssignOp_ConvertFromPt = 7,
    AssignOp_ConvertFromPix = 8
};

// A relational operator of a condition: ==, <, >, <=, >=, and != (also written <>).
enum Conditional_e : int8_t {
    Conditional_EqualTo = 0,
    Conditional_LessThan = 1,
    Conditional_GreaterThan = 2,
    Conditional_LessThanOrEqual = 3,
    Conditional_GreaterThanOrEqual = 4,
    Conditional_NotEqual = 5
};

// One command of a macro list (the main macro or a macro function body).
struct MacroCommand_s {
    char *Command;         // the compressed command; owned (newmalloc)
    bool StopHere;         // breakpoint of the macro viewer
    uint8_t Reserved;      // cleared on creation
    int32_t LineNumber;    // line of the file on which the command starts
    int32_t Offset;        // position in its list, from 1
    int16_t MacroVersion;  // version in the header of the file that held it
    char *RawData;         // the raw data section, or null; owned (newmalloc)
    MacroCommand_s *Prev;
    MacroCommand_s *Next;
};

// Appends a new node to the list *head. *last, if given, is the list's last node (or null for an
// empty list) and is moved to the new node; without it the list is walked. The node copies the
// command and takes over rawData (newmalloc'd or null), also when the result is false.
bool PushMacroCommand(MacroCommand_s **head, MacroCommand_s **last, const char *command, int lineNumber,
                      int macroVersion, char *rawData);
// Frees every node of the list and sets *head to null.
void DeallocMacroCommandList(MacroCommand_s **head);

// What a command being compressed carries from one physical line to the next.
struct MacroCompressState_s {
    int SubCommandDepth = 0;       // open { blocks
    int MajorIndex = -1;           // the command's major word, -1 until it has been read
    MacroToken_e MajorToken = MacroToken_Action;
    bool MandatoryDone = false;    // the positional option of an action has been taken
    bool RawDataSeen = false;      // the line held RAWDATA: a raw data section follows
    bool ExpectSubStart = false;   // a parent option was read: only { may follow
    bool ExpectMajor = true;       // nothing read yet: the first token must be a major command
    int LastParentRow = -1;        // the parent option (the last of a chain) whose block { opens
    std::vector<int> EnclosingRows;  // per open block, its parent option; the major row below them
    int TokensAfterMajor = 0;      // tokens appended behind the major word
    bool AfterCallName = false;    // the last token was the function name of $!RUNMACROFUNCTION
};

// Compresses one physical line of a command onto *command. Errors are reported (as preprocessor
// errors, with `line` and the line's text) and give false.
bool CompressPartialAsciiCommand(const char *text, std::string *command, int line, MacroCompressState_s *state);

// Reads the next command of a macro stream, or compresses singleCommandText (stream null) and
// reads nothing. *command gets the compressed command; empty at a true result means the end of
// the input. *lineNumber counts the physical lines read so far (the caller starts it at the
// number of lines already read, for instance 1 behind the header); *firstLineNumber gets the line
// on which the command starts. Both may be null for a single text. rawData, if given, receives the
// raw data section of the command (newmalloc'd) or null; without it a command with raw data is
// refused. The RAWDATA marker itself is not kept in the compressed command: the section stands
// beside it.
bool GetNextCompressedCommand(FILE *stream, const char *singleCommandText, std::string *command, char **rawData,
                              int *lineNumber, int *firstLineNumber);

// True if, after blanks, the text has @, ! or $ followed by a digit.
bool IsCompressedCommand(const char *text);

// The one reporter of macro errors: the message, the line on which the command starts, the
// command (compressed, or the raw text with isCompressed false: a "(PreProcessor): " error), and
// the traceback of the macro function calls in progress (MacroCallStack), in at most 500
// characters. The innermost level of the traceback stands at the failing command: `line`, and
// `offset` (its position in its list; -1 takes that of the command the interpreter is running,
// MacroCurrentOffset).
void ErrBadMacro(const char *message, int line, const char *command, bool isCompressed, int offset = -1);

// ---- compressed text (macroscan.cpp) ----
// Each scanner starts at *text, skips blanks, tabs and newlines, and on success moves *text past
// what it read. Failures are reported through ErrBadMacro with line and command, except where said.

// !, $ or @ and a table index. With subOptionOnly the token must be a set-value parent that is not
// a major command. reportErrors false keeps failures silent.
bool ScanCompressedForMacroCommand(const char **text, int line, const char *command, int *index,
                                   MacroToken_e *token, bool subOptionOnly, bool reportErrors);
// A command token that must be a major command.
bool ScanCompressedForMajorCommand(const char **text, int line, const char *command, int *index, MacroToken_e *token);
// The major command a compressed command starts with; silent, and the text is not moved.
bool QueryCompressedForMajorCommand(const char *text, int *index, MacroToken_e *token);
// An optional minus and up to ten digits, at most 2,147,483,646 in magnitude. Silent: each caller
// has its own message.
bool ScanCompressedForInteger(const char **text, LgIndex_t *value);
// A value of the enumerated set of `row`: a name of the set, or an integer that is a value of it.
bool ScanCompressedForEnumValue(const char **text, int line, const char *command, int row, int *value);
// [members]: a, a-b, a-b:c, one-based up to MaxMacroSetMember, commas optional. *set gets a new
// set (zero-based members) that the caller deallocates.
bool ScanCompressedForSet(const char **text, int line, const char *command, Set_a **set);
// A quoted string with \\ and the escaped quote resolved into a new *result (newfree it).
// refuseWhiteSpace refuses blanks, tabs and newlines in it.
bool ScanCompressedForString(const char **text, int line, const char *command, char **result, bool refuseWhiteSpace);
// =, +=, -=, *= or /=.
bool ScanCompressedForAssignOp(const char **text, int line, const char *command, AssignOp_e *assignOp);
// = alone; another assignment operator is refused as not allowed here.
bool ScanCompressedForEquals(const char **text, int line, const char *command);
// ==, <, >, <=, >=, != or <>.
bool ScanCompressedForConditional(const char **text, int line, const char *command, Conditional_e *conditional);
// A condition: string relop string (compared without regard to case), or number relop number
// where each number may be a parenthesised expression.
bool ScanCompressedForConditionalExpression(const char **text, int line, const char *command, bool *isTrue);
// A number, or a parenthesised expression; either may carry a unit suffix, given in *suffixOp as
// the conversion (AssignOp_Equals for none or PI). `name` is the option named in messages.
bool ScanCompressedForDouble(const char **text, int line, const char *command, const char *name, double *value,
                             AssignOp_e *suffixOp);

// Reads the assignment that follows set-value row `row` according to the row's kind: doubles
// into *doubleValue; integers, enumerated values, strings (a char * to newfree) and sets (a
// Set_a * to deallocate) into *argValue. allowAssignOps false admits = only.
bool GetAssignedValueForSetValueCommand(int row, const char **text, int line, const char *command,
                                        double *doubleValue, ArbParam_t *argValue, AssignOp_e *assignOp,
                                        bool allowAssignOps);

// A real number: optional sign, digits with an optional point and at least one digit, and an
// exponent of E, e, D or d with at most three digits and not above 308. Leading blanks are
// skipped; *text moves past the number. Magnitudes below 1e-150 become 0, above 1e150 are clipped.
bool ScanForReal(const char **text, double *value);
// A whole text of at most 31 characters that ScanForReal reads entirely (blanks around allowed).
bool IsAReal2(const char *text, double *value);
// A unit suffix behind a number, with or without a blank in front: CM, IN, PT, PIX or PI in any
// case, not followed by a letter or digit. *suffixOp gets its conversion (PI converts nothing)
// and *suffix its upper-case spelling; *text moves past it.
bool ScanForUnitSuffix(const char **text, AssignOp_e *suffixOp, std::string *suffix);

// Writes a compressed command as text: prefix, then $!NAME and what follows. With multiLine each
// sub-option goes on a line of its own, indented by the prefix length plus two blanks per level;
// without it the text stops at the first sub-option. False for garbage (the text then ends in
// "<UNRECOGNIZABLE COMMAND>") or when the text would pass textSize characters (it is cut there).
bool UncompressMacroCommand(const char *command, std::string *text, size_t textSize, const char *prefix,
                            bool multiLine);
// Writes a command as it stands or uncompressed (multi-line), and a newline.
bool DumpMacroCommand(const char *command, bool asCompressed, FILE *stream);

// ---- raw data ----
// Reads the raw data section that follows a RAWDATA command: lines up to one that starts (after
// blanks) with $!, or $ or @ and a digit, which is left in the stream. Comments are removed and
// comment lines dropped; the lines are joined by newlines. *lineNumber counts the lines read.
bool LoadRawMacroData(FILE *stream, int *lineNumber, int firstLineNumber, char **rawData);
// Appends a line to a raw data section under construction (a newline goes between lines).
bool StuffStringIntoRawData(char **rawData, const char *text);

// Gives the text of a macro variable reference (what stands between the bars, such as "A",
// "A%5.2f" or "1") as it is to be substituted; false if nothing is known under it.
using MacroVarLookUp_pf = bool (*)(const char *name, std::string *value, void *clientData);
// Substitutes the macro variables of a raw section: a |reference| whose text lookUp knows is
// replaced; any other bar stays. *cooked is `raw` itself if the section holds no bar, else a new
// string; release it with DeallocRawMacroData(cooked, raw).
bool GetCookedRawMacroData(const char *raw, int line, const char *command, MacroVarLookUp_pf lookUp,
                           void *clientData, char **cooked);
// Frees *rawData unless it is `original` (the raw section a cooked one came from), and clears it.
void DeallocRawMacroData(char **rawData, const char *original = nullptr);

// The parsers of raw data sections. Each reports through ErrBadMacro with line and command.
struct RawColorMapEntry_s {
    int R, G, B;
};
// A count from 1 to MaxRawColorMapEntries, then R G B from 0 to 255 per entry.
bool LoadColorMapRawMacroData(const char *raw, int line, const char *command,
                              std::vector<RawColorMapEntry_s> *entries);
// A count from 1 to MAXNUMCONTOURLEVELS, then the levels.
bool LoadContourLevelRawMacroData(const char *raw, int line, const char *command, std::vector<double> *levels);

struct RawPolyline_s {
    int NumPoints = 0;
    int NumValuesPerPoint = 0;
    std::vector<double> Values;  // point after point, NumValuesPerPoint values each
};
// The number of points and the values per point, each from 1 to MAXPTSINALINE, then the values.
bool LoadPolylineRawMacroData(const char *raw, int line, const char *command, RawPolyline_s *polyline);
// A count from 1 to MAXPTSINALINE, then X Y pairs.
bool LoadXYPolylineRawMacroData(const char *raw, int line, const char *command, std::vector<XY_s> *points);
// A count from 1 to MAXPTSINALINE, then X Y Z triples.
bool LoadXYZPolylineRawMacroData(const char *raw, int line, const char *command, std::vector<XYZ_s> *points);

// The shape a geometry's raw data describes; the values of enumerated set 126.
enum RawGeomType_e : int8_t {
    RawGeomType_LineSegs = 0,
    RawGeomType_Rectangle = 1,
    RawGeomType_Square = 2,
    RawGeomType_Circle = 3,
    RawGeomType_Ellipse = 4,
    RawGeomType_LineSegs3D = 5,
    RawGeomType_Image = 6
};
struct RawGeomPosition_s {
    // Line segments: per segment its points (Z 0 for 2D; Theta in X and R in Y for polar).
    std::vector<std::vector<XYZ_s>> Segments;
    double XSize = 0.0;  // rectangle and ellipse x-size, square and circle size, image width
    double YSize = 0.0;  // rectangle and ellipse y-size, image height
};
bool LoadGeomPositionRawMacroData(const char *raw, int line, const char *command, RawGeomType_e geomType,
                                  bool isPolar, RawGeomPosition_s *position);
