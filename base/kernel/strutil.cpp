// String helpers. Strings are exactly sized: every append allocates the new length and frees the
// old buffer. Letter case is folded for ASCII only, so comparisons do not depend on the locale, and
// numbers are read in the "C" locale for the same reason.
// Relies on: alloc, errors, strlist.
#include "base/kernel/strutil.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale.h>
#include <mutex>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/strlist.h"

namespace {

inline unsigned char foldUpper(unsigned char c) { return (c >= 'a' && c <= 'z') ? static_cast<unsigned char>(c - 'a' + 'A') : c; }
inline char foldLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
inline bool isBlank(char c) { return c == ' '; }
inline bool isSpace(char c) { return isspace(static_cast<unsigned char>(c)) != 0; }
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

char *dupRange(const char *s, size_t length) {
    auto *copy = static_cast<char *>(newmalloc(length + 1));
    if (copy == nullptr) return nullptr;
    memcpy(copy, s, length);
    copy[length] = '\0';
    return copy;
}

// The first place at or after s where the length characters of piece occur, letters folded.
const char *findFolded(const char *s, const char *piece, size_t length) {
    for (; *s != '\0'; s++) {
        if (ustrncmp(s, piece, length) == 0) return s;
    }
    return length == 0 ? s : nullptr;
}

bool appendRange(StringList_s *list, const char *s, size_t length) {
    char *line = dupRange(s, length);
    if (line == nullptr) return false;
    bool isOk = StringListAppendString(list, line);
    newfree(line);
    return isOk;
}

// Breaks one line (without newlines) into pieces of at most width characters at blanks. A word
// longer than width stands alone on its line. Blanks at a break are dropped on both sides; the
// leading blanks of the first piece stay, as indentation.
bool breakLine(StringList_s *list, const char *text, size_t length, size_t width) {
    size_t pos = 0;
    for (;;) {
        size_t rest = length;
        while (rest > pos && isBlank(text[rest - 1])) rest--;
        if (rest - pos <= width) return appendRange(list, text + pos, rest - pos);

        size_t firstNonBlank = pos;
        while (isBlank(text[firstNonBlank])) firstNonBlank++;
        // The last blank that leaves a line of at most width characters with something in it.
        size_t breakAt = 0;
        for (size_t i = pos + width; i > firstNonBlank; i--) {
            if (isBlank(text[i])) {
                breakAt = i;
                break;
            }
        }
        if (breakAt == 0) {
            // An over-long word: break at the first blank after it.
            breakAt = firstNonBlank;
            while (breakAt < rest && !isBlank(text[breakAt])) breakAt++;
        }
        size_t lineEnd = breakAt;
        while (lineEnd > pos && isBlank(text[lineEnd - 1])) lineEnd--;
        if (!appendRange(list, text + pos, lineEnd - pos)) return false;
        if (breakAt >= rest) return true;
        pos = breakAt;
        while (pos < rest && isBlank(text[pos])) pos++;
    }
}

constexpr size_t kFormatBufferInitialSize = 49152;
constexpr char kFormatSentinel = '\x7f';

std::mutex formatBufferMutex;
char *formatBuffer = nullptr;
size_t formatBufferSize = kFormatBufferInitialSize;

locale_t cLocale() {
    static locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return locale;
}

}  // namespace

char *DupString(const char *s) {
    if (s == nullptr) return nullptr;
    return dupRange(s, strlen(s));
}

bool InternalResetString(char **target, const char *value, bool issueError) {
    REQUIRE(target != nullptr);
    char *copy = nullptr;
    if (value != nullptr) {
        // Copy before freeing: value may be the old string itself.
        copy = DupString(value);
        if (copy == nullptr) {
            if (issueError) ErrMsg("Out of memory");
            return false;
        }
    }
    newfree(*target);
    *target = copy;
    return true;
}

char *FormatString(const char *format, ...) {
    va_list args;
    va_start(args, format);
    char *result = vFormatString(format, args);
    va_end(args);
    return result;
}

char *vFormatString(const char *format, va_list args) {
    REQUIRE(format != nullptr);
    std::lock_guard<std::mutex> lock(formatBufferMutex);
    for (;;) {
        if (formatBuffer == nullptr) {
            formatBuffer = static_cast<char *>(newmalloc(formatBufferSize));
            if (formatBuffer == nullptr) {
                formatBufferSize = kFormatBufferInitialSize;
                return nullptr;
            }
        }
        // vsnprintf writes its terminator at the last byte only when the text did not fit, so an
        // intact sentinel there proves the whole text is in the buffer.
        formatBuffer[formatBufferSize - 1] = kFormatSentinel;
        va_list argsCopy;
        va_copy(argsCopy, args);
        int length = vsnprintf(formatBuffer, formatBufferSize, format, argsCopy);
        va_end(argsCopy);
        if (length < 0) return nullptr;
        if (formatBuffer[formatBufferSize - 1] == kFormatSentinel) break;
        newfree(formatBuffer);
        formatBuffer = nullptr;
        formatBufferSize += std::max<size_t>(formatBufferSize / 2, 1);
    }
    char *result = DupString(formatBuffer);
    if (result == nullptr) {
        newfree(formatBuffer);
        formatBuffer = nullptr;
        formatBufferSize = kFormatBufferInitialSize;
    }
    return result;
}

void FormatStringBufferCleanup() {
    std::lock_guard<std::mutex> lock(formatBufferMutex);
    newfree(formatBuffer);
    formatBuffer = nullptr;
    formatBufferSize = kFormatBufferInitialSize;
}

bool TackOnString(char **target, const char *add, bool deleteAdd, bool convertNewlines) {
    REQUIRE(target != nullptr);
    if (add == nullptr) return true;
    size_t oldLength = *target != nullptr ? strlen(*target) : 0;
    size_t addLength = strlen(add);
    if (convertNewlines) addLength += static_cast<size_t>(std::count(add, add + strlen(add), '\n'));
    auto *joined = static_cast<char *>(newmalloc(oldLength + addLength + 1));
    bool isOk = joined != nullptr;
    if (isOk) {
        if (oldLength > 0) memcpy(joined, *target, oldLength);
        char *out = joined + oldLength;
        for (const char *in = add; *in != '\0'; in++) {
            if (convertNewlines && *in == '\n') {
                *out++ = '\\';
                *out++ = 'n';
            } else {
                *out++ = *in;
            }
        }
        *out = '\0';
        newfree(*target);
        *target = joined;
    }
    if (deleteAdd) newfree(const_cast<char *>(add));
    return isOk;
}

bool TackOnConstString(char **target, const char *add, bool convertNewlines) {
    return TackOnString(target, add, false, convertNewlines);
}

bool TackOnChar(char **target, char c) {
    char add[2] = {c, '\0'};
    return TackOnString(target, add, false, false);
}

char *CopySubString(const char *source, LgIndex_t start, LgIndex_t count) {
    REQUIRE(start >= 0 && count >= 0);
    if (source == nullptr) return nullptr;
    size_t length = strlen(source);
    size_t first = std::min(static_cast<size_t>(start), length);
    return dupRange(source + first, std::min(static_cast<size_t>(count), length - first));
}

void ReplaceCharInString(char *s, char oldChar, char newChar) {
    if (s == nullptr) return;
    for (; *s != '\0'; s++) {
        if (*s == oldChar) *s = newChar;
    }
}

void LowerCaseStr(char *s) {
    if (s == nullptr) return;
    for (; *s != '\0'; s++) *s = foldLower(*s);
}

void Capitalize(char *s) {
    if (s == nullptr || *s == '\0') return;
    s[0] = static_cast<char>(foldUpper(static_cast<unsigned char>(s[0])));
}

void TrimLeadAndTrailSpaces(char *s) {
    if (s == nullptr) return;
    size_t length = strlen(s);
    while (length > 0 && isSpace(s[length - 1])) length--;
    size_t lead = 0;
    while (lead < length && isSpace(s[lead])) lead++;
    memmove(s, s + lead, length - lead);
    s[length - lead] = '\0';
}

void StringTruncate(char *s, LgIndex_t maxLength) {
    REQUIRE(maxLength >= 0);
    if (s == nullptr) return;
    if (strlen(s) > static_cast<size_t>(maxLength)) s[maxLength] = '\0';
}

void StringTrimAndTruncate(char *s, LgIndex_t maxLength) {
    TrimLeadAndTrailSpaces(s);
    StringTruncate(s, maxLength);
    // The cut may leave blanks at the new end.
    TrimLeadAndTrailSpaces(s);
}

StringList_s *LineBreakString(const char *s, int width) {
    REQUIRE(width > 0);
    StringList_s *lines = StringListAlloc();
    if (lines == nullptr || s == nullptr) return lines;
    const char *line = s;
    for (;;) {
        const char *end = strchr(line, '\n');
        if (end == nullptr) end = line + strlen(line);
        if (!breakLine(lines, line, static_cast<size_t>(end - line), static_cast<size_t>(width))) {
            StringListDealloc(&lines);
            return nullptr;
        }
        if (*end == '\0') break;
        line = end + 1;
    }
    return lines;
}

char *WrapString(const char *s, int width) {
    REQUIRE(width > 0);
    if (s == nullptr) return nullptr;
    if (strlen(s) <= static_cast<size_t>(width)) return DupString(s);
    StringList_s *lines = LineBreakString(s, width);
    if (lines == nullptr) return nullptr;
    char *wrapped = StringListToNLString(lines);
    StringListDealloc(&lines);
    return wrapped;
}

bool MatchKey(const char *s, const char *pattern) {
    if (s == nullptr || pattern == nullptr || *s == '\0' || *pattern == '\0') return false;
    const char *cursor = s;
    bool isAnchored = *pattern != '*';  // only the first piece, and only without a leading star
    const char *piece = pattern;
    while (*piece != '\0') {
        if (*piece == '*') {
            piece++;
            continue;
        }
        const char *pieceEnd = strchr(piece, '*');
        if (pieceEnd == nullptr) pieceEnd = piece + strlen(piece);
        size_t length = static_cast<size_t>(pieceEnd - piece);
        if (isAnchored) {
            if (ustrncmp(cursor, piece, length) != 0) return false;
        } else {
            cursor = findFolded(cursor, piece, length);
            if (cursor == nullptr) return false;
        }
        cursor += length;
        isAnchored = false;
        piece = pieceEnd;
    }
    return true;
}

void RemoveSeparator(const char **cursor) {
    REQUIRE(cursor != nullptr && *cursor != nullptr);
    while (**cursor == ' ' || **cursor == '\t' || **cursor == ',') (*cursor)++;
}

void SkipWhiteSpace(const char **cursor) {
    REQUIRE(cursor != nullptr && *cursor != nullptr);
    while (**cursor == ' ' || **cursor == '\t' || **cursor == '\n') (*cursor)++;
}

int ustrcmp(const char *a, const char *b) {
    if (a == nullptr || b == nullptr) return (a != nullptr) - (b != nullptr);
    const auto *p = reinterpret_cast<const unsigned char *>(a);
    const auto *q = reinterpret_cast<const unsigned char *>(b);
    while (*p != '\0' && foldUpper(*p) == foldUpper(*q)) {
        p++;
        q++;
    }
    return int(foldUpper(*p)) - int(foldUpper(*q));
}

int ustrncmp(const char *a, const char *b, size_t n) {
    if (a == nullptr || b == nullptr) return (a != nullptr) - (b != nullptr);
    const auto *p = reinterpret_cast<const unsigned char *>(a);
    const auto *q = reinterpret_cast<const unsigned char *>(b);
    for (size_t i = 0; i < n; i++) {
        int difference = int(foldUpper(p[i])) - int(foldUpper(q[i]));
        if (difference != 0 || p[i] == '\0') return difference;
    }
    return 0;
}

const char *ustrstr(const char *haystack, const char *needle) {
    if (needle == nullptr || haystack == nullptr) return haystack;
    return findFolded(haystack, needle, strlen(needle));
}

bool ScanForString(const char **cursor, char **result, bool keepQuotes) {
    REQUIRE(cursor != nullptr && *cursor != nullptr && result != nullptr);
    const char *p = *cursor;
    SkipWhiteSpace(&p);
    char quote = *p;
    if (quote != '"' && quote != '\'') return false;
    char otherQuote = quote == '"' ? '\'' : '"';
    p++;
    std::string text;
    // A string that opens with the other quote holds a piece in that quote, inside which our own
    // quote character is plain text: "'say "hi"'" reads as 'say "hi"'.
    bool inInnerPiece = *p == otherQuote;
    if (inInnerPiece) text += *p++;
    for (;;) {
        char c = *p;
        if (c == '\0') return false;
        if (c == '\\' && p[1] == '\\') {
            text += "\\\\";
            p += 2;
        } else if (c == '\\' && p[1] == quote) {
            if (keepQuotes) text += '\\';
            text += quote;
            p += 2;
        } else if (inInnerPiece) {
            if (c == otherQuote) inInnerPiece = false;
            text += c;
            p++;
        } else if (c == quote) {
            p++;
            break;
        } else {
            text += c;
            p++;
        }
    }
    char *copy = DupString(text.c_str());
    if (copy == nullptr) return false;
    *result = copy;
    *cursor = p;
    return true;
}

bool ScanForSymbol(const char **cursor, char symbol, bool onlySkipWhiteSpace) {
    REQUIRE(cursor != nullptr && *cursor != nullptr && symbol != '\0');
    const char *p = *cursor;
    if (onlySkipWhiteSpace) {
        SkipWhiteSpace(&p);
        if (*p != symbol) return false;
    } else {
        p = strchr(p, symbol);
        if (p == nullptr) return false;
    }
    *cursor = p + 1;
    return true;
}

bool ReplaceNewlineWithBackslashN(char **s) {
    REQUIRE(s != nullptr);
    if (*s == nullptr || strchr(*s, '\n') == nullptr) return true;
    char *converted = nullptr;
    if (!TackOnString(&converted, *s, false, true)) return false;
    newfree(*s);
    *s = converted;
    return true;
}

void ReplaceBackslashNWithNewline(char *s) {
    if (s == nullptr) return;
    char *out = s;
    for (const char *in = s; *in != '\0'; in++) {
        if (in[0] == '\\' && in[1] == 'n') {
            *out++ = '\n';
            in++;
        } else {
            *out++ = *in;
        }
    }
    *out = '\0';
}

char *EscapeOutDelimitersInString(const char *s, const char *delimiters) {
    if (s == nullptr) return nullptr;
    std::string escaped;
    for (; *s != '\0'; s++) {
        if (delimiters != nullptr && strchr(delimiters, *s) != nullptr) escaped += '\\';
        escaped += *s;
    }
    return DupString(escaped.c_str());
}

char *ConvertStringToNewlineDelimitedString(const char *s) {
    if (s == nullptr) return nullptr;
    std::string lines;
    const char *p = s;
    for (bool isFirst = true;; isFirst = false) {
        while (*p == ' ' || *p == '\t' || *p == '\n' || *p == ',') p++;
        if (*p == '\0') break;
        char *piece = nullptr;
        if (!ScanForString(&p, &piece, false)) return nullptr;
        if (!isFirst) lines += '\n';
        lines += piece;
        newfree(piece);
    }
    return DupString(lines.c_str());
}

char *ConvertNewlineDelimitedStringToQuotedString(const char *s) {
    if (s == nullptr) return nullptr;
    std::string quoted = "\"";
    for (; *s != '\0'; s++) {
        if (*s == '\n') {
            quoted += "\" \"";
        } else {
            if (*s == '"') quoted += '\\';
            quoted += *s;
        }
    }
    quoted += '"';
    return DupString(quoted.c_str());
}

char *InsertNameAtPlaceHolder(const char *text, const char *name) {
    if (text == nullptr || strchr(text, '@') == nullptr) return nullptr;
    std::string result;
    for (; *text != '\0'; text++) {
        if (*text == '@') {
            if (name != nullptr) result += name;
        } else {
            result += *text;
        }
    }
    return DupString(result.c_str());
}

void Tokenize(const std::string &s, const std::string &delimiters, std::vector<std::string> *tokens) {
    REQUIRE(tokens != nullptr);
    size_t start = s.find_first_not_of(delimiters);
    while (start != std::string::npos) {
        size_t end = s.find_first_of(delimiters, start);
        tokens->push_back(s.substr(start, end == std::string::npos ? std::string::npos : end - start));
        start = s.find_first_not_of(delimiters, end);
    }
}

std::string Trim_left(const std::string &s) {
    size_t start = 0;
    while (start < s.size() && isSpace(s[start])) start++;
    return s.substr(start);
}

std::string Trim_right(const std::string &s) {
    size_t end = s.size();
    while (end > 0 && isSpace(s[end - 1])) end--;
    return s.substr(0, end);
}

std::string Trim(const std::string &s) { return Trim_left(Trim_right(s)); }

bool IsAReal(const char *s, double *value, bool *clipped) {
    if (s == nullptr) return false;
    const char *p = s;
    while (isSpace(*p)) p++;
    const char *start = p;
    if (*p == '+' || *p == '-') p++;
    int digits = 0;
    for (; isDigit(*p); p++) digits++;
    if (*p == '.') {
        for (p++; isDigit(*p); p++) digits++;
    }
    if (digits == 0) return false;
    if (*p == 'e' || *p == 'E') {
        p++;
        if (*p == '+' || *p == '-') p++;
        if (!isDigit(*p)) return false;
        while (isDigit(*p)) p++;
    }
    std::string number(start, p);
    while (isSpace(*p)) p++;
    if (*p != '\0') return false;

    errno = 0;
    double parsed = strtod_l(number.c_str(), nullptr, cLocale());
    bool isClipped = false;
    if (std::fabs(parsed) > 1.0E150) {
        parsed = parsed > 0 ? 1.0E150 : -1.0E150;
        isClipped = true;
    } else if (parsed != 0.0 && std::fabs(parsed) < 1.0E-150) {
        parsed = 0.0;
        isClipped = true;
    } else if (parsed == 0.0 && errno == ERANGE) {
        isClipped = true;  // a non-zero text too small even for a denormal
    }
    if (value != nullptr) *value = parsed;
    if (clipped != nullptr) *clipped = isClipped;
    return true;
}

bool IsALgIndex(const char *s, LgIndex_t *value) {
    if (s == nullptr) return false;
    const char *p = s;
    while (isSpace(*p)) p++;
    bool isNegative = *p == '-';
    if (*p == '+' || *p == '-') p++;
    if (!isDigit(*p)) return false;
    int64_t magnitude = 0;
    for (; isDigit(*p); p++) {
        magnitude = magnitude * 10 + (*p - '0');
        if (magnitude > MAXINDEX) return false;
    }
    while (isSpace(*p)) p++;
    if (*p != '\0') return false;
    if (value != nullptr) *value = static_cast<LgIndex_t>(isNegative ? -magnitude : magnitude);
    return true;
}

std::vector<std::string> SplitLines(const std::string &text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (true) {
        size_t newline = text.find('\n', start);
        lines.push_back(text.substr(start, newline == std::string::npos ? std::string::npos : newline - start));
        if (newline == std::string::npos) return lines;
        start = newline + 1;
    }
}
