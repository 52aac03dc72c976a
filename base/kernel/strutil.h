// String helpers shared by the macro language, the file readers and the dialogs. Owned strings are
// exactly sized and made by newmalloc; a function that gives a string gives a copy the caller
// frees with newfree, unless its comment says otherwise.
// Relies on: alloc, errors, strlist (LineBreakString).
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>
#include <vector>

#include "base/kernel/types.h"

struct StringList_s;

char *DupString(const char *s);  // null in gives null out
// Frees *target and puts a copy of value there (null clears it). On out of memory *target is
// left as it was and the result is false.
bool InternalResetString(char **target, const char *value, bool issueError);

// printf-style formatting into a new string; null on out of memory.
char *FormatString(const char *format, ...) __attribute__((format(printf, 1, 2)));
char *vFormatString(const char *format, va_list args);
void FormatStringBufferCleanup();

// Appends add to *target (which may be null). convertNewlines writes each newline as backslash n.
// deleteAdd frees add afterwards (add must then be a newmalloc'd string). A null add is a success.
bool TackOnString(char **target, const char *add, bool deleteAdd, bool convertNewlines);
bool TackOnConstString(char **target, const char *add, bool convertNewlines);
bool TackOnChar(char **target, char c);
// The count characters from start on (fewer at the end of the string).
char *CopySubString(const char *source, LgIndex_t start, LgIndex_t count);

// In place.
void ReplaceCharInString(char *s, char oldChar, char newChar);
void LowerCaseStr(char *s);
void Capitalize(char *s);  // the first character upper case, the rest as it is
void TrimLeadAndTrailSpaces(char *s);
void StringTruncate(char *s, LgIndex_t maxLength);
void StringTrimAndTruncate(char *s, LgIndex_t maxLength);

// Lines of at most width characters, broken at blanks; see strutil.cpp for the rules.
StringList_s *LineBreakString(const char *s, int width);
// The lines of LineBreakString joined by newlines; a text of width characters or fewer is kept.
char *WrapString(const char *s, int width);
// Case-blind match in which '*' stands for any run of characters; the end is not anchored.
bool MatchKey(const char *s, const char *pattern);

// Cursor helpers: each moves *cursor forward.
void RemoveSeparator(const char **cursor);  // blanks, tabs and commas
void SkipWhiteSpace(const char **cursor);   // blanks, tabs and newlines

// Comparison with ASCII letters folded to upper case. Null sorts below any string.
int ustrcmp(const char *a, const char *b);
int ustrncmp(const char *a, const char *b, size_t n);
const char *ustrstr(const char *haystack, const char *needle);

// Reads a quoted string (double or single quotes) after white space into a new *result and moves
// the cursor past the closing quote. False, with cursor and result untouched, if no quote opens
// or none closes.
bool ScanForString(const char **cursor, char **result, bool keepQuotes);
// Moves past symbol: found after white space only, or anywhere ahead. False leaves the cursor.
bool ScanForSymbol(const char **cursor, char symbol, bool onlySkipWhiteSpace);

bool ReplaceNewlineWithBackslashN(char **s);
void ReplaceBackslashNWithNewline(char *s);  // in place
// A copy in which each character found in delimiters has a backslash in front.
char *EscapeOutDelimitersInString(const char *s, const char *delimiters);
// Quoted strings separated by white space or commas, read back as lines joined by newlines; null
// if a quote isn't closed or something other than a quoted string appears.
char *ConvertStringToNewlineDelimitedString(const char *s);
// Each line in double quotes (a double quote inside gets a backslash), the lines joined by blanks.
char *ConvertNewlineDelimitedStringToQuotedString(const char *s);
// Every "@" of text replaced by name; null if text has none.
char *InsertNameAtPlaceHolder(const char *text, const char *name);

// Appends to tokens the non-empty runs of s between characters of delimiters.
void Tokenize(const std::string &s, const std::string &delimiters, std::vector<std::string> *tokens);
std::string Trim(const std::string &s);
std::string Trim_left(const std::string &s);
std::string Trim_right(const std::string &s);

// A whole text (surrounding white space allowed) that is a decimal number. Magnitudes above
// 1.0E150 are clipped to it and those below 1.0E-150 become 0; *clipped (may be null) says so.
bool IsAReal(const char *s, double *value, bool *clipped);
// Optional white space, an optional sign and digits, at most 2147483646 in magnitude.
bool IsALgIndex(const char *s, LgIndex_t *value);

// The lines of a text, split at each newline (an empty text gives one empty line).
std::vector<std::string> SplitLines(const std::string &text);
