// The text data file converter. One pass over the input: the header records go to an in-memory
// header (written behind the preamble once the variables are known), and each zone's values go
// straight to a scratch file as the zone's data record; at the end the output gets the preamble,
// the header records, the end-of-header marker and the scratch file's bytes.
// Relies on: alloc, tempdir, auxdata (valid names), nodemap (nodes per element), plot3d (-plot3d input).
#include "base/data/fenrow.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "base/data/dataset.h"
#include "base/data/fielddata.h"
#include "base/data/nodemap.h"
#include "base/data/plot3d.h"
#include "base/data/zonespec.h"
#include "base/kernel/alloc.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/tempdir.h"

namespace {

constexpr size_t MaxLineLength = 31998;
constexpr int MaxFenrowZones = MaxNumZonesOrVars;
constexpr int MaxFenrowVars = MaxNumZonesOrVars;
constexpr float ZoneMarker = 299.0f, CustomLabelMarker = 599.0f, UserRecMarker = 699.0f,
                DataSetAuxMarker = 799.0f, VarAuxMarker = 899.0f, EndOfHeaderMarker = 357.0f;

// ---- the first error, formatted once -------------------------------------------------------

struct ErrorState {
    bool set = false;
    std::string text;
};

void setError(ErrorState *err, const std::string &text) {
    if (err->set) return;
    err->set = true;
    err->text = text;
}

// ---- output through a buffer; a null file keeps everything in memory ----------------------

struct Sink {
    FILE *file = nullptr;
    bool swap = false;
    bool ok = true;
    bool discard = false;  // values of zones left out of the conversion
    std::vector<char> buf;
    size_t used = 0;
    int64_t flushed = 0;

    explicit Sink(FILE *f) : file(f) { buf.resize(f != nullptr ? (1u << 20) : 4096); }
    int64_t position() const { return flushed + int64_t(used); }
    void flush() {
        if (file == nullptr || used == 0) return;
        if (fwrite(buf.data(), 1, used, file) != used) ok = false;
        flushed += int64_t(used);
        used = 0;
    }
    void bytes(const void *data, size_t count) {
        if (discard) return;
        if (used + count > buf.size()) {
            if (file != nullptr) flush();
            if (count > buf.size()) buf.resize(std::max(count, buf.size() * 2));
            while (used + count > buf.size()) buf.resize(buf.size() * 2);
        }
        memcpy(buf.data() + used, data, count);
        used += count;
    }
    template <typename T>
    void raw(T value) {
        if (swap && sizeof(T) > 1) {
            unsigned char b[sizeof(T)];
            memcpy(b, &value, sizeof(T));
            std::reverse(b, b + sizeof(T));
            bytes(b, sizeof(T));
        } else {
            bytes(&value, sizeof(T));
        }
    }
    void i32(int32_t v) { raw(v); }
    void f32(float v) { raw(v); }
    void f64(double v) { raw(v); }
    void text(const std::string &s) {
        for (unsigned char c : s) i32(int32_t(c));
        i32(0);
    }
    // Overwrites bytes already written (the min/max pairs of a zone).
    void patch(int64_t offset, const std::vector<char> &data) {
        if (discard) return;
        if (offset >= flushed) {
            memcpy(buf.data() + (offset - flushed), data.data(), data.size());
            return;
        }
        flush();
        if (fseeko(file, offset, SEEK_SET) != 0 || fwrite(data.data(), 1, data.size(), file) != data.size() ||
            fseeko(file, 0, SEEK_END) != 0)
            ok = false;
    }
};

// ---- tokens --------------------------------------------------------------------------------

enum TokKind { Tok_EOF, Tok_EOL, Tok_Record, Tok_Word, Tok_String, Tok_Number, Tok_Sequence, Tok_Equals,
               Tok_LParen, Tok_RParen, Tok_Set };

enum Record_e { Rec_Zone, Rec_FEConnect, Rec_Title, Rec_DataSetAux, Rec_VarAux, Rec_Variables, Rec_Geometry,
                Rec_Text, Rec_CustomLabels, Rec_UserRec, Rec_None };

const char *const RecordNames[] = {"ZONE", "FECONNECT", "TITLE", "DATASETAUXDATA", "VARAUXDATA", "VARIABLES",
                                   "GEOMETRY", "TEXT", "CUSTOMLABELS", "USERREC"};

struct Token {
    TokKind kind = Tok_EOF;
    Record_e record = Rec_None;
    std::string text;       // words and strings
    double value = 0.0;     // numbers
    long repeat = 1;        // numbers: how many times the value is served
    int seqStart = 0, seqEnd = 0;
    std::vector<int> members;  // sets, zero-based
    int line = 0, col = 0;
};

// The common decimal numbers of data files, exactly: digits, a point and an exponent whose
// mantissa fits in 53 bits and whose power of ten is at most 22 away. Then the mantissa and the
// power are both exact doubles and one multiplication or division rounds correctly. Anything
// else is left to from_chars.
bool fastDecimal(const char *p, const char *end, double *value) {
    static const double powers[23] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    bool negative = p < end && *p == '-';
    if (negative) p++;
    uint64_t mantissa = 0;
    int digits = 0, exponent = 0;
    bool any = false;
    for (; p < end && *p >= '0' && *p <= '9'; p++, any = true) {
        if (mantissa == 0 && *p == '0') continue;
        if (++digits > 18) return false;
        mantissa = mantissa * 10 + uint64_t(*p - '0');
    }
    if (p < end && *p == '.') {
        for (p++; p < end && *p >= '0' && *p <= '9'; p++, any = true) {
            exponent--;
            if (mantissa == 0 && *p == '0') continue;
            if (++digits > 18) return false;
            mantissa = mantissa * 10 + uint64_t(*p - '0');
        }
    }
    if (!any) return false;
    if (p < end && (*p == 'E' || *p == 'e')) {
        p++;
        bool negativeExponent = p < end && *p == '-';
        if (p < end && (*p == '-' || *p == '+')) p++;
        int e = 0;
        bool expDigits = false;
        for (; p < end && *p >= '0' && *p <= '9'; p++, expDigits = true) {
            e = e * 10 + (*p - '0');
            if (e > 1000) return false;
        }
        if (!expDigits) return false;
        exponent += negativeExponent ? -e : e;
    }
    if (p != end || mantissa > (uint64_t(1) << 53) || exponent < -22 || exponent > 22) return false;
    double result = double(mantissa);
    result = exponent < 0 ? result / powers[-exponent] : result * powers[exponent];
    *value = negative ? -result : result;
    return true;
}

bool sameIgnoringCase(const std::string &a, const char *b) {
    size_t n = strlen(b);
    if (a.size() != n) return false;
    for (size_t i = 0; i < n; i++)
        if (toupper((unsigned char)a[i]) != toupper((unsigned char)b[i])) return false;
    return true;
}

bool isSeparator(char c) { return c == ' ' || c == ',' || c == '\t' || c == '\r' || c == '\\'; }
bool isNumberChar(char c) {
    return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.' || c == 'E' || c == 'e' || c == 'D' || c == 'd';
}
char blankControl(char c) {
    unsigned char u = (unsigned char)c;
    return (u < 32 || (u >= 128 && u <= 159)) ? ' ' : c;
}

struct Lexer {
    FILE *file = nullptr;
    std::vector<char> block;
    size_t blockPos = 0, blockLen = 0;
    bool rawEof = false;
    std::string line;
    size_t pos = 0;
    int lineNo = 0;
    bool lineLoaded = false, atEof = false;
    int parenDepth = 0;
    bool inVariables = false, inSet = false;
    ErrorState *err = nullptr;

    bool fail(const char *message, int col) { return failAt(message, lineNo, col); }
    bool failAt(const char *message, int lineNumber, int col);

    int getChar() {
        if (blockPos == blockLen) {
            if (rawEof) return EOF;
            blockLen = fread(block.data(), 1, block.size(), file);
            blockPos = 0;
            if (blockLen == 0) {
                rawEof = true;
                return EOF;
            }
        }
        return (unsigned char)block[blockPos++];
    }
    // The next line that holds something; empty lines and comments count but give no token.
    bool readLine() {
        for (;;) {
            line.clear();
            pos = 0;
            int c = getChar();
            if (c == EOF) {
                atEof = true;
                return true;
            }
            lineNo++;
            if (Interrupted && !InBatchMode) {  // the user's interrupt, honoured line by line
                setError(err, "Conversion interrupted.");
                return false;
            }
            // Copy the rest of the line a run at a time: scanning the block for the end of the
            // line and appending the run costs far less than a call and a push per character.
            if (c != '\n' && c != '\r') {
                line.push_back(char(c));
                for (;;) {
                    if (blockPos == blockLen && (c = getChar()) != EOF) blockPos--;  // refill
                    if (blockPos == blockLen) {
                        c = EOF;
                        break;
                    }
                    const char *start = block.data() + blockPos, *end = block.data() + blockLen, *q = start;
                    while (q < end && *q != '\n' && *q != '\r') q++;
                    line.append(start, size_t(q - start));
                    blockPos += size_t(q - start);
                    if (line.size() > MaxLineLength) return fail("Line Too Long", -1);
                    if (q < end) {
                        c = (unsigned char)*q;
                        blockPos++;
                        break;
                    }
                }
            }
            if (c == '\r') {  // a run of carriage returns, and the newline of a CR LF pair
                do c = getChar(); while (c == '\r');
                if (c != '\n' && c != EOF) blockPos--;
            }
            if (line.empty() || line[0] == '#') continue;
            return true;
        }
    }

    bool next(Token &t, bool stopAtEol = false);
    bool lexNumber(Token &t);
    bool lexSet(Token &t);
};

bool Lexer::failAt(const char *message, int lineNumber, int col) {
    if (err->set) return false;
    std::string text = std::string("Err:  ") + message + "\n\n";
    char head[200];
    if (col >= 0 && col < 50) {
        snprintf(head, sizeof(head), "Error occurred on line %d near position\nmarked with \"@\" below:\n\n", lineNumber);
        std::string shown = line.substr(0, 200);
        shown.insert(std::min(size_t(col), shown.size()), "@");
        text += head + shown + "\n";
    } else {
        snprintf(head, sizeof(head), "Error occurred on line number %d\n\n", lineNumber);
        text += head;
    }
    setError(err, text);
    return false;
}

bool Lexer::lexNumber(Token &t) {
    // The plain decimal of most data files ends at a separator and has nothing the general scan
    // below must rewrite (no repeat, no sequence, no exponent without its letter): read it in place.
    {
        const char *begin = line.data() + pos, *end = line.data() + line.size(), *q = begin;
        if (q < end && (*q == '-' || *q == '+')) q++;
        while (q < end && ((*q >= '0' && *q <= '9') || *q == '.')) q++;
        if (q < end && (*q == 'e' || *q == 'E')) {
            q++;
            if (q < end && (*q == '-' || *q == '+')) q++;
            while (q < end && *q >= '0' && *q <= '9') q++;
        }
        bool ends = q == end || *q == ' ' || *q == '\t' || *q == ',';
        double value;
        if (ends && fastDecimal(*begin == '+' ? begin + 1 : begin, q, &value)) {
            pos += size_t(q - begin);
            t.kind = Tok_Number;
            t.value = value;
            t.repeat = 1;
            return true;
        }
    }
    char digitsOnly[48];
    char nb[48];
    int n = 0;
    bool digits = false, point = false, expo = false;
    size_t p = pos;
    while (p < line.size()) {
        char c = line[p];
        if (c >= '0' && c <= '9') {
            digits = true;
            nb[n++] = c;
        } else if (c == '.') {
            point = true;
            nb[n++] = c;
        } else if (c == 'E' || c == 'e' || c == 'D' || c == 'd') {
            if (expo) return fail("Bad Value", t.col);
            expo = true;
            nb[n++] = 'E';
        } else if (c == '+' || c == '-') {
            if (n == 0 || nb[n - 1] == 'E') {
                nb[n++] = c;
            } else if (digits && !expo) {
                if (c == '-' && (parenDepth > 0 || inSet) && !point) {
                    // A sequence: digits, a hyphen, digits.
                    memcpy(digitsOnly, nb, size_t(n));
                    digitsOnly[n] = '\0';
                    size_t q = p + 1, endStart = q;
                    while (q < line.size() && line[q] >= '0' && line[q] <= '9') q++;
                    if (q == endStart || q - endStart > 10) return fail("Bad Value", t.col);
                    t.kind = Tok_Sequence;
                    t.seqStart = atoi(digitsOnly);
                    t.seqEnd = atoi(line.substr(endStart, q - endStart).c_str());
                    pos = q;
                    if (t.seqEnd <= t.seqStart)
                        return fail("Invalid sequence syntax: end sequence value must be larger than the start value.",
                                    t.col);
                    return true;
                }
                nb[n++] = 'E';  // the exponent without its letter
                nb[n++] = c;
                expo = true;
            } else {
                break;
            }
        } else {
            break;
        }
        p++;
        if (n > 40) return fail("Bad Value", t.col);
    }
    const char *first = nb, *last = nb + n;
    if (n > 0 && nb[0] == '+') first++;
    double value = 0.0;
    if (!fastDecimal(first, last, &value)) {
        auto result = std::from_chars(first, last, value, std::chars_format::general);
        if (result.ec == std::errc::result_out_of_range) return fail("Value out of Range", t.col);
        if (result.ec != std::errc() || result.ptr != last) return fail("Bad Value", t.col);
    }
    pos = p;
    t.kind = Tok_Number;
    t.value = value;
    t.repeat = 1;
    if (pos < line.size() && line[pos] == '*') {
        // A repeat: the count, then the value it serves.
        double count = value;
        pos++;
        if (pos >= line.size() || !(isNumberChar(line[pos]) && line[pos] != 'E' && line[pos] != 'e' &&
                                    line[pos] != 'D' && line[pos] != 'd'))
            return fail("Bad Repeat", t.col);
        if (count < 1.0 || count > 2147483646.0 || count != std::floor(count)) return fail("Bad Repeat", t.col);
        Token v;
        v.col = int(pos);
        if (!lexNumber(v) || v.kind != Tok_Number) return err->set ? false : fail("Bad Repeat", t.col);
        t.value = v.value;
        t.repeat = long(count);
        t.kind = Tok_Number;
    }
    return true;
}

bool Lexer::lexSet(Token &t) {
    int line0 = lineNo, col0 = t.col;
    inSet = true;
    std::vector<int> members;
    Token m;
    for (;;) {
        if (!next(m)) return inSet = false;
        if (m.kind == Tok_Set) return inSet = false;  // nested: reported by next
        if (m.kind == Tok_Word && m.text == "]") break;
        if (m.kind == Tok_Number) {
            if (m.value != std::floor(m.value) || m.value < 1 || m.value > 32700 || m.repeat != 1) {
                inSet = false;
                return fail("Invalid set member.", m.col);
            }
            members.push_back(int(m.value) - 1);
        } else if (m.kind == Tok_Sequence) {
            if (m.seqStart < 1 || m.seqEnd > 32700) {
                inSet = false;
                return fail("Invalid set member sequence.", m.col);
            }
            for (int s = m.seqStart; s <= m.seqEnd; s++) members.push_back(s - 1);
        } else {
            inSet = false;
            return fail("Expecting a set member.", m.col);
        }
    }
    inSet = false;
    t.kind = Tok_Set;
    t.members = std::move(members);
    t.line = line0;
    t.col = col0;
    return true;
}

// The next token. Lines are loaded as needed unless stopAtEol asks for the end of the line.
bool Lexer::next(Token &t, bool stopAtEol) {
    for (;;) {
        if (!lineLoaded) {
            if (!readLine()) return false;
            lineLoaded = true;
        }
        if (atEof) {
            t.kind = Tok_EOF;
            t.line = lineNo;
            t.col = -1;
            return true;
        }
        while (pos < line.size() && isSeparator(line[pos])) pos++;
        if (pos < line.size()) break;
        if (stopAtEol) {
            t.kind = Tok_EOL;
            t.line = lineNo;
            t.col = int(pos);
            return true;
        }
        lineLoaded = false;
    }
    t.line = lineNo;
    t.col = int(pos);
    char c = line[pos];
    if (c == '=') {
        pos++;
        t.kind = Tok_Equals;
        return true;
    }
    if (!inVariables && c == '(') {
        pos++;
        parenDepth++;
        t.kind = Tok_LParen;
        return true;
    }
    if (!inVariables && c == ')') {
        pos++;
        if (parenDepth > 0) parenDepth--;
        t.kind = Tok_RParen;
        return true;
    }
    if (c == '[') {
        if (inSet) return fail("Sets cannot be nested.", t.col);
        pos++;
        return lexSet(t);
    }
    if (c == ']') {
        if (!inSet) return fail("Unexpected set character, ']', found.", t.col);
        pos++;
        t.kind = Tok_Word;
        t.text = "]";
        return true;
    }
    if ((c >= '0' && c <= '9') || c == '.' || c == '+' || c == '-') return lexNumber(t);
    t.text.clear();
    if (c == '"') {
        pos++;
        for (;;) {
            if (pos >= line.size()) return fail("Missing or Invalid character string", t.col);
            char s = line[pos++];
            if (s == '"') break;
            if (s == '\\' && pos < line.size()) {
                if (line[pos] == '\\' && pos + 1 < line.size() && line[pos + 1] == 'n') {
                    t.text.push_back('\n');
                    pos += 2;
                    continue;
                }
                s = line[pos++];
            }
            t.text.push_back(blankControl(s));
        }
        t.kind = Tok_String;
        return true;
    }
    while (pos < line.size()) {
        char w = line[pos];
        if (isSeparator(w) || w == '=' || (!inVariables && w == ')') || (inSet && w == ']')) break;
        if (t.text.size() < 32000) t.text.push_back(blankControl(w));
        pos++;
    }
    t.kind = Tok_Word;
    for (int r = 0; r < int(Rec_None); r++)
        if (sameIgnoringCase(t.text, RecordNames[r])) {
            t.kind = Tok_Record;
            t.record = Record_e(r);
            break;
        }
    return true;
}

// ---- options -------------------------------------------------------------------------------

struct IndexRange {
    int zone = 0;  // one-based; 0 all zones
    int start = 1, end = 0, skip = 1;
};

struct Options {
    std::vector<IndexRange> ranges[3];
    bool haveZoneList = false;
    std::vector<bool> zoneList;
    int lastListedZone = -1;
    bool stopAfterLastZone = false;
    bool foreign = false;
    std::string input, output;
};

// ---- zones ---------------------------------------------------------------------------------

struct ZoneKeep {  // what later zones may take from this one
    ZoneType_e type = ZoneType_Ordered;
    int64_t i = 0, j = 0, k = 0;  // ordered: I, J, K; FE: N, E
    int fileZone = -1;            // number in the output, -1 if not written
    std::vector<ValueLocation_e> locations;
};

struct ZoneHeader {
    std::string name;
    bool nameGiven = false;
    int parent = -1;
    bool strandGiven = false, timeGiven = false;
    int strand = 0;
    double solutionTime = 0.0;
    int color = -1;
    bool iGiven = false, jGiven = false, kGiven = false, nGiven = false, eGiven = false, nvGiven = false;
    int64_t i = 0, j = 0, k = 0, n = 0, e = 0, nv = 0;
    bool feKeyGiven = false;  // N, E, NV, the cell dimensions or ET
    int64_t cellDim[3] = {0, 0, 0};
    bool zoneTypeGiven = false, dataPackingGiven = false, etGiven = false, fGiven = false;
    ZoneType_e type = ZoneType_Ordered;
    bool isFE = false;
    bool point = true;
    std::vector<FieldDataType_e> types;
    std::vector<std::pair<int, int>> sharePairs;  // (variable, zone), zero-based, as given
    std::vector<int> shareZone;  // by variable, zero-based, -1 none
    std::vector<bool> passive;
    std::vector<ValueLocation_e> locations;
    std::vector<bool> locationGiven;
    int connectivityShare = -1;
    int fnMode = 0;
    bool fnComplete = false;
    int64_t fnConnections = 0;
    std::vector<std::pair<std::string, std::string>> aux;
};

const char *const ZoneTypeNames[] = {"ORDERED", "FELINESEG", "FETRIANGLE", "FEQUADRILATERAL", "FETETRAHEDRON", "FEBRICK"};
const ZoneType_e ZoneTypeOfName[] = {ZoneType_Ordered, ZoneType_FELineSeg, ZoneType_FETriangle, ZoneType_FEQuad,
                                     ZoneType_FETetra, ZoneType_FEBrick};
const char *const ElementNames[] = {"TRIANGLE", "QUADRILATERAL", "TETRAHEDRON", "BRICK", "LINESEG"};
const ZoneType_e ElementTypes[] = {ZoneType_FETriangle, ZoneType_FEQuad, ZoneType_FETetra, ZoneType_FEBrick,
                                   ZoneType_FELineSeg};
const char *const ColorNames[] = {"BLACK", "RED", "GREEN", "BLUE", "CYAN", "YELLOW", "PURPLE", "WHITE"};
const char *const PackingNames[] = {"POINT", "BLOCK"};
const char *const FormatNames[] = {"POINT", "BLOCK", "FEPOINT", "FEBLOCK"};
const char *const LocationNames[] = {"NODAL", "CELLCENTERED"};
const char *const YesNoNames[] = {"NO", "YES"};
const char *const FNModeNames[] = {"LOCALONETOONE", "LOCALONETOMANY", "GLOBALONETOONE", "GLOBALONETOMANY"};

int32_t zoneTypeFileCode(ZoneType_e type) {
    for (int32_t code = 0; code < 6; code++)
        if (ZoneTypeOfName[code] == type) return code;
    return 0;
}

int lookup(const std::string &word, const char *const *names, int count) {
    for (int n = 0; n < count; n++)
        if (sameIgnoringCase(word, names[n])) return n;
    return -1;
}

// ---- the converter -------------------------------------------------------------------------

struct Converter {
    Lexer lex;
    Token tok;
    ErrorState err;
    Options opt;
    Sink *header = nullptr;  // header records, kept in memory
    Sink *data = nullptr;    // the scratch file
    std::string title;
    std::vector<std::string> varNames;
    bool varsKnown = false;
    int numVars = 0;
    int maxVarAuxVar = -1;
    int zonesRead = 0, zonesWritten = 0;
    std::vector<ZoneKeep> zones;
    bool stop = false;
    long repeatLeft = 0;
    double repeatValue = 0.0;
    std::vector<int> parents;  // zero-based parent of each zone read, -1 none

    bool advance() { return lex.next(tok); }
    bool failTok(const char *message) { return lex.failAt(message, tok.line, tok.col); }
    bool failPlain(const char *message) {
        setError(&err, std::string("Err: ") + message);
        return false;
    }
    bool failRaw(const std::string &message) {
        setError(&err, message);
        return false;
    }

    // An integer value: 0.49 added toward its sign, then truncated.
    bool toInt(double value, int64_t *out) {
        double rounded = std::trunc(value + (value >= 0 ? 0.49 : -0.49));
        if (std::fabs(rounded) > 2147483646.0) return failTok("Integer out of range");
        *out = int64_t(rounded);
        return true;
    }
    bool expectEquals(const char *message) {
        if (!advance()) return false;
        if (tok.kind != Tok_Equals) return failTok(message);
        return advance();
    }
    // Reads an integer at tok, then advances.
    bool intValue(int64_t *out, bool absolute = true) {
        if (tok.kind != Tok_Number) return failTok("Expecting a value");
        if (!toInt(tok.value, out)) return false;
        if (absolute && *out < 0) *out = -*out;
        return advance();
    }
    bool doubleValue(double *out) {
        if (tok.kind != Tok_Number) return failTok("Expecting a value");
        if (std::fabs(tok.value) > 1.0e150) return failTok("Value out of Range");
        *out = tok.value;
        return advance();
    }
    // KEY=NAME, one of names; any other value is "Bad Value".
    bool choiceValue(const char *missingEquals, const char *const *names, int count, int *out) {
        if (!expectEquals(missingEquals)) return false;
        int n = tok.kind == Tok_Word ? lookup(tok.text, names, count) : -1;
        if (n < 0) return failTok("Bad Value");
        *out = n;
        return advance();
    }
    // KEY=number from low to high.
    bool rangedValue(double low, double high, double *out) {
        if (!expectEquals("Missing an Equals sign")) return false;
        if (tok.kind == Tok_Number && (tok.value < low || tok.value > high)) return failTok("Value out of Range");
        return doubleValue(out);
    }
    // The anchor of a text or geometry: X, Y, Z, or R and THETA in their places, never both kinds.
    bool anchorValue(const std::string &key, bool *cartesian, bool *polar, double *x, double *y, double *z) {
        bool isPolar = key == "R" || key == "THETA";
        if ((isPolar && *cartesian) || (!isPolar && *polar)) return failTok("Cannot mix X,Y, and Z with R and THETA.");
        (isPolar ? *polar : *cartesian) = true;
        double *target = key == "X" || key == "R" ? x : key == "Y" || key == "THETA" ? y : z;
        return rangedValue(-1.0e150, 1.0e150, target);
    }
    bool wordValue(std::string *out, const char *message) {
        if (tok.kind != Tok_Word && tok.kind != Tok_String) return failTok(message);
        *out = tok.text;
        return advance();
    }

    // name = "value", at tok.
    bool auxPair(const char *record, std::string *name, std::string *value) {
        char message[200];
        if (tok.kind != Tok_Word || !AuxDataIsValidName(tok.text.c_str())) {
            snprintf(message, sizeof(message), "'%s' requires a name value pair.\nFor example: my_name=\"my value\".", record);
            return failTok(message);
        }
        *name = tok.text;
        if (!advance()) return false;
        if (tok.kind != Tok_Equals) {
            snprintf(message, sizeof(message), "'%s' name value pairs must be separated by an equal sign.", record);
            return failTok(message);
        }
        if (!advance()) return false;
        if (tok.kind != Tok_String) {
            snprintf(message, sizeof(message), "'%s' requires a name value pair.\nFor example: my_name=\"my value\".", record);
            return failTok(message);
        }
        *value = tok.text;
        return advance();
    }

    void skipRestOfLine() {
        lex.pos = lex.line.size();
    }

    bool setNumVars(int count) {
        numVars = count;
        varsKnown = true;
        if (varNames.empty())
            for (int v = 0; v < count; v++) {
                char name[32];
                snprintf(name, sizeof(name), "V%-4d", v + 1);
                std::string trimmed = name;
                trimmed.erase(trimmed.find_last_not_of(' ') + 1);
                varNames.push_back(trimmed);
            }
        if (maxVarAuxVar >= numVars) return failPlain("VARAUXDATA variable index is not a valid variable.");
        return true;
    }

    bool parseHeader();
    bool parseRecords();
    bool parseZone();
    bool zoneHeader(ZoneHeader &z);
    bool zoneKeyword(ZoneHeader &z, const std::string &key);
    bool checkZone(ZoneHeader &z, ZoneKeep &keep, bool &openI, bool &openE);
    bool zoneData(ZoneHeader &z, ZoneKeep &keep, bool openI, bool openE, bool written, int zoneNumber);
    bool countFirstLine(int *count);
    bool colorValue(int *color);
    bool parseText();
    bool parseGeometry();
};

}  // namespace

namespace {

bool Converter::parseHeader() {
    if (!advance()) return false;
    for (;;) {
        if (tok.kind == Tok_EOF) return failTok("Unexpected End of File in Datafile header");
        if (tok.kind == Tok_Number) return true;
        if (tok.kind == Tok_Record && tok.record == Rec_Title) {
            if (!expectEquals("Missing Equals Sign after 'TITLE' in header")) return false;
            if (tok.kind != Tok_String) return failTok("Expecting a string");
            title = tok.text.substr(0, size_t(MaxDataSetTitleLength));
            if (!advance()) return false;
        } else if (tok.kind == Tok_Record && tok.record == Rec_Variables) {
            lex.inVariables = true;
            bool ok = advance();
            if (ok && tok.kind != Tok_Equals) ok = failTok("Missing Equals sign after 'VARIABLES' in header");
            ok = ok && advance();
            std::vector<std::string> names;
            while (ok && (tok.kind == Tok_String || tok.kind == Tok_Word)) {
                if (names.size() >= size_t(MaxFenrowVars))
                    ok = failTok("Maximum number of variables exceeded (increase $!Limits MaxFenrowVars)");
                else {
                    names.push_back(tok.text.substr(0, size_t(MaxVarNameLength)));
                    ok = advance();
                }
            }
            lex.inVariables = false;
            lex.parenDepth = 0;
            if (!ok) return false;
            if (names.empty()) return failTok("Bad variable name for variable:");
            varNames = std::move(names);
            if (!setNumVars(int(varNames.size()))) return false;
        } else if (tok.kind == Tok_Record) {
            return true;
        } else if (!advance()) {
            return false;
        }
    }
}

// The numbers on the line of the current token, counted without consuming them.
bool Converter::countFirstLine(int *count) {
    size_t savedPos = lex.pos;
    int savedDepth = lex.parenDepth;
    Token t = tok;
    long n = 0;
    while (t.kind == Tok_Number) {
        n += t.repeat;
        if (!lex.next(t, true)) return false;
    }
    lex.pos = savedPos;
    lex.parenDepth = savedDepth;
    *count = int(std::min<long>(n, MaxFenrowVars));
    return true;
}

// A colour at tok: a name, 0 to 7, or CUST/CUSTOM with n (1 to 56) behind it, stored as n + 7.
bool Converter::colorValue(int *color) {
    int64_t value;
    if (tok.kind == Tok_Number) {
        if (!intValue(&value, false)) return false;
        if (value < 0 || value > 7) return failTok("Invalid Color");
        *color = int(value);
        return true;
    }
    if (tok.kind != Tok_Word) return failTok("Invalid Color");
    std::string upper = tok.text;
    for (char &c : upper) c = char(toupper((unsigned char)c));
    int named = lookup(upper, ColorNames, 8);
    if (named >= 0) {
        *color = named;
        return advance();
    }
    size_t prefix = upper.rfind("CUSTOM", 0) == 0 ? 6 : upper.rfind("CUST", 0) == 0 ? 4 : 0;
    if (prefix == 0) return failTok("Invalid Color");
    int64_t n = -1;
    if (prefix < upper.size()) {
        char *endp = nullptr;
        n = strtol(upper.c_str() + prefix, &endp, 10);
        if (*endp != '\0') return failTok("Invalid Color");
        if (n < 1 || n > 56) return failTok("Invalid Color");
        if (!advance()) return false;
    } else {
        if (!advance()) return false;
        if (tok.kind != Tok_Number) return failTok("Invalid Color");
        if (!toInt(tok.value, &n)) return false;
        if (n < 1 || n > 56) return failTok("Invalid Color");
        if (!advance()) return false;
    }
    *color = int(n + 7);
    return true;
}

bool Converter::zoneKeyword(ZoneHeader &z, const std::string &keyIn) {
    std::string key = keyIn;
    for (char &c : key) c = char(toupper((unsigned char)c));
    int64_t value;
    std::string word;
    auto intKey = [&](bool &given, int64_t &target) {
        given = true;
        return expectEquals("Missing an Equals sign") && intValue(&target);
    };
    if (key == "T") {
        if (!expectEquals("Missing an Equals sign")) return false;
        if (!wordValue(&z.name, "Missing or Invalid character string")) return false;
        z.name = z.name.substr(0, size_t(MaxZoneNameLength));
        z.nameGiven = true;
        return true;
    }
    if (key == "I") return intKey(z.iGiven, z.i);
    if (key == "J") return intKey(z.jGiven, z.j);
    if (key == "K") return intKey(z.kGiven, z.k);
    if (key == "N") return z.feKeyGiven = true, intKey(z.nGiven, z.n);
    if (key == "E") return z.feKeyGiven = true, intKey(z.eGiven, z.e);
    if (key == "NV") return z.feKeyGiven = true, intKey(z.nvGiven, z.nv);
    if (key == "ICELLDIM" || key == "JCELLDIM" || key == "KCELLDIM") {
        bool given;
        z.feKeyGiven = true;
        return intKey(given, z.cellDim[key[0] - 'I']);
    }
    if (key == "PARENTZONE") {
        if (!expectEquals("Missing an Equals sign") || !intValue(&value)) return false;
        if (value == zonesRead + 1) return failTok("PARENTZONE assignment may not be self referencing.");
        if (value < 1) return failTok("PARENTZONE assignment must be to an existing zone within the datafile.");
        z.parent = int(value - 1);
        return true;
    }
    if (key == "STRANDID") {
        z.strandGiven = true;
        if (!expectEquals("Missing an Equals sign") || !intValue(&value)) return false;
        if (value > MaxNumZonesOrVars) return failTok("Value out of Range");
        z.strand = int(value);
        return true;
    }
    if (key == "SOLUTIONTIME") {
        z.timeGiven = true;
        return expectEquals("Missing an Equals sign") && doubleValue(&z.solutionTime);
    }
    if (key == "AUXDATA") {
        std::string name, text;
        if (!advance() || !auxPair("AUXDATA", &name, &text)) return false;
        if (sameIgnoringCase(name, "Common.Time")) {
            const char *begin = text.c_str();
            while (*begin == ' ') begin++;
            const char *end = text.c_str() + text.size();
            while (end > begin && end[-1] == ' ') end--;
            double time = 0.0;
            auto result = std::from_chars(*begin == '+' ? begin + 1 : begin, end, time);
            if (begin == end || result.ec != std::errc() || result.ptr != end || std::fabs(time) > 1.0e150)
                return lex.failAt("Invalid Common.Time auxiliary data value.", tok.line, tok.col);
            z.solutionTime = time;
            z.timeGiven = true;
            return true;
        }
        z.aux.emplace_back(name, text);
        return true;
    }
    if (key == "C") {
        int color;
        if (!expectEquals("Missing Equals Sign in Color Assignment") || !colorValue(&color)) return false;
        z.color = color;
        return true;
    }
    if (key == "ZONETYPE" || key == "DATAPACKING" || key == "ET" || key == "F") {
        const char *message = key == "ZONETYPE" ? "Missing Equals sign for ZONETYPE Specifier"
                              : key == "DATAPACKING" ? "Missing Equals sign for DATAPACKING Specifier"
                              : key == "F" ? "Missing Equals sign for Format Specifier" : "Missing an Equals sign";
        if (!expectEquals(message)) return false;
        if (tok.kind != Tok_Word) return failTok("Bad Value");
        bool modern = key == "ZONETYPE" || key == "DATAPACKING";
        if ((modern && (z.etGiven || z.fGiven)) || (!modern && (z.zoneTypeGiven || z.dataPackingGiven)))
            return failTok("Cannot mix 'ZONETYPE' and 'DATAPACKING' options with deprecated 'ET' and 'F' options.");
        if (key == "ZONETYPE") {
            int n = lookup(tok.text, ZoneTypeNames, 6);
            if (n < 0) return failTok("Bad Value");
            z.zoneTypeGiven = true;
            z.type = ZoneTypeOfName[n];
        } else if (key == "DATAPACKING") {
            int n = lookup(tok.text, PackingNames, 2);
            if (n < 0) return failTok("Bad Value");
            z.dataPackingGiven = true;
            z.point = n == 0;
        } else if (key == "ET") {
            int n = lookup(tok.text, ElementNames, 5);
            if (n < 0) return failTok("Bad Value");
            z.etGiven = true;
            z.feKeyGiven = true;
            z.type = ElementTypes[n];
        } else {
            int n = lookup(tok.text, FormatNames, 4);
            if (n < 0) return failTok("Bad Value");
            z.fGiven = true;
            z.point = n == 0 || n == 2;
            z.isFE = n >= 2;
        }
        return advance();
    }
    if (key == "DT") {
        if (!expectEquals("Missing Equals Sign in Data Type Assignment")) return false;
        if (tok.kind != Tok_LParen) return failTok("Expecting a Data type or right parenthesis");
        if (!advance()) return false;
        static const char *const typeNames[] = {"SINGLE", "FLOAT", "DOUBLE", "LONGINT", "SHORTINT", "BYTE", "BIT"};
        static const FieldDataType_e typeCodes[] = {FieldDataType_Float, FieldDataType_Float, FieldDataType_Double,
                                                    FieldDataType_LongInt, FieldDataType_ShortInt, FieldDataType_Byte,
                                                    FieldDataType_Bit};
        z.types.clear();
        while (tok.kind != Tok_RParen) {
            int n = tok.kind == Tok_Word ? lookup(tok.text, typeNames, 7) : -1;
            if (n < 0) return failTok("Expecting a Data type or right parenthesis");
            z.types.push_back(typeCodes[n]);
            if (!advance()) return false;
        }
        return advance();
    }
    if (key == "D") {
        if (!expectEquals("Missing an Equals sign")) return false;
        if (tok.kind != Tok_LParen) return failTok("Invalid value for dup var Assignment");
        if (!advance()) return false;
        std::vector<int> members;
        while (tok.kind != Tok_RParen) {
            if (tok.kind == Tok_Number && tok.value >= 1 && tok.value == std::floor(tok.value)) {
                members.push_back(int(tok.value) - 1);
            } else if (tok.kind == Tok_Sequence) {
                for (int s = tok.seqStart; s <= tok.seqEnd; s++) members.push_back(s - 1);
            } else if (tok.kind == Tok_Record && tok.record == Rec_FEConnect) {
                if (zonesRead == 0)
                    return failTok("No prior zone is available from which the connectivity list can be duplicated.");
                z.connectivityShare = zonesRead - 1;
            } else {
                return failTok("Invalid value for dup var Assignment");
            }
            if (!advance()) return false;
        }
        for (int v : members) z.sharePairs.emplace_back(v, zonesRead - 1);
        return advance();
    }
    if (key == "VARSHARELIST") {
        if (!expectEquals("Missing an Equals sign")) return false;
        if (tok.kind != Tok_LParen) return failTok("Bad Value");
        if (!advance()) return false;
        while (tok.kind != Tok_RParen) {
            if (tok.kind != Tok_Set) return failTok("Bad Value");
            std::vector<int> members = tok.members;
            int from = zonesRead - 1;
            if (!advance()) return false;
            if (tok.kind == Tok_Equals) {
                if (!advance()) return false;
                if (tok.kind == Tok_Number && tok.value >= zonesRead + 1)
                    return failTok("Variables can only share from a lower numbered zone.");
                if (!intValue(&value)) return false;
                from = int(value) - 1;
            }
            if (from < 0 || from >= zonesRead) return failTok("Variables can only share from a lower numbered zone.");
            for (int v : members) z.sharePairs.emplace_back(v, from);
        }
        return advance();
    }
    if (key == "CONNECTIVITYSHAREZONE") {
        if (!expectEquals("Missing an Equals sign")) return false;
        if (tok.kind == Tok_Number && (tok.value >= zonesRead + 1 || tok.value < 1))
            return failTok("Connectivity list can only share from a lower numbered zone.");
        if (!intValue(&value)) return false;
        z.connectivityShare = int(value) - 1;
        return true;
    }
    if (key == "VARLOCATION") {
        if (!expectEquals("Missing an Equals sign")) return false;
        if (tok.kind != Tok_LParen) return failTok("Bad Value");
        if (!advance()) return false;
        while (tok.kind != Tok_RParen) {
            std::vector<int> members;
            if (tok.kind == Tok_Set) members = tok.members;
            else if (tok.kind == Tok_Number && tok.value >= 1 && tok.value == std::floor(tok.value))
                members.push_back(int(tok.value) - 1);
            else return failTok("Bad Value");
            if (!expectEquals("Missing an Equals sign")) return false;
            int n = tok.kind == Tok_Word ? lookup(tok.text, LocationNames, 2) : -1;
            if (n < 0) return failTok("Bad Value");
            for (int v : members) {
                if (size_t(v) < z.locations.size() && z.locationGiven[size_t(v)])
                    return failTok("A variable's value location has been multiply defined.");
                if (size_t(v) >= z.locations.size()) {
                    z.locations.resize(size_t(v) + 1, ValueLocation_Nodal);
                    z.locationGiven.resize(size_t(v) + 1, false);
                }
                z.locations[size_t(v)] = n == 0 ? ValueLocation_Nodal : ValueLocation_CellCentered;
                z.locationGiven[size_t(v)] = true;
            }
            if (!advance()) return false;
        }
        return advance();
    }
    if (key == "PASSIVEVARLIST") {
        if (!expectEquals("Missing an Equals sign")) return false;
        if (tok.kind != Tok_Set) return failTok("Bad Value");
        for (int v : tok.members) {
            if (size_t(v) >= z.passive.size()) z.passive.resize(size_t(v) + 1, false);
            z.passive[size_t(v)] = true;
        }
        return advance();
    }
    if (key == "FACENEIGHBORMODE") {
        if (!expectEquals("Missing an Equals sign")) return false;
        int n = tok.kind == Tok_Word ? lookup(tok.text, FNModeNames, 4) : -1;
        if (n < 0) return failTok("Bad Value");
        z.fnMode = n;
        return advance();
    }
    if (key == "FEFACENEIGHBORSCOMPLETE") {
        if (!expectEquals("Missing an Equals sign")) return false;
        int n = tok.kind == Tok_Word ? lookup(tok.text, YesNoNames, 2) : -1;
        if (n < 0) return failTok("Bad Value");
        z.fnComplete = n == 1;
        return advance();
    }
    if (key == "FACENEIGHBORCONNECTIONS") {
        bool given;
        return intKey(given, z.fnConnections);
    }
    return failTok("Bad Identifier in zone header");
}

}  // namespace

namespace {

// The indices kept in one direction: s to e (0: the end) in steps of k, the end always kept.
struct Keep1 {
    int64_t s = 1, e = 0, k = 1;
    bool active = false;
    int64_t end(int64_t dim) const { return std::min(e <= 0 ? dim : e, dim); }
    bool kept(int64_t idx, int64_t dim) const {  // idx one-based
        if (!active) return true;
        int64_t last = end(dim);
        return idx >= s && idx <= last && ((idx - s) % k == 0 || idx == last);
    }
    int64_t count(int64_t dim) const {
        if (!active) return dim;
        int64_t last = end(dim);
        if (last < s) return 0;
        return (last - s) / k + 1 + ((last - s) % k != 0 ? 1 : 0);
    }
};

struct VarOut {
    int var = 0;
    FieldDataType_e type = FieldDataType_Float;
    bool cellCentered = false;
    double min = 1.0e150, max = -1.0e150;
    unsigned bitAcc = 0;
    int bitCount = 0;
};

double roundHalf(double v) { return std::trunc(v + (v >= 0 ? 0.49 : -0.49)); }

inline void putValue(Sink *out, VarOut &o, double v) {
    double stored;
    switch (o.type) {
    // Floating values are clipped as the binary writer clips them, so the file never holds what
    // the reader refuses (a double beyond 1.0E150) or a denormal.
    case FieldDataType_Float: {
        float f = std::fabs(v) < 1.17549435e-38 ? 0.0f : float(std::clamp(v, -3.40282347e38, 3.40282347e38));
        out->f32(f);
        stored = f;
        break;
    }
    case FieldDataType_Double:
        stored = std::fabs(v) < 1.0e-150 ? 0.0 : std::clamp(v, -1.0e150, 1.0e150);
        out->f64(stored);
        break;
    case FieldDataType_LongInt:
        stored = std::clamp(roundHalf(v), -2147483648.0, 2147483647.0);
        out->i32(int32_t(stored));
        break;
    case FieldDataType_ShortInt:
        stored = std::clamp(roundHalf(v), -32768.0, 32767.0);
        out->raw(int16_t(stored));
        break;
    case FieldDataType_Byte:
        stored = std::clamp(roundHalf(v), 0.0, 255.0);
        out->raw(uint8_t(stored));
        break;
    default:  // bit: packed lowest bit first
        stored = roundHalf(v) != 0.0 ? 1.0 : 0.0;
        if (stored != 0.0) o.bitAcc |= 1u << o.bitCount;
        if (++o.bitCount == 8) {
            out->raw(uint8_t(o.bitAcc));
            o.bitAcc = 0;
            o.bitCount = 0;
        }
        break;
    }
    if (stored < o.min) o.min = stored;
    if (stored > o.max) o.max = stored;
}

// A slot of the ghost layout that holds no cell: zero, and not part of the range.
inline void putGhost(Sink *out, VarOut &o) {
    switch (o.type) {
    case FieldDataType_Float: out->f32(0.0f); break;
    case FieldDataType_Double: out->f64(0.0); break;
    case FieldDataType_LongInt: out->i32(0); break;
    case FieldDataType_ShortInt: out->raw(int16_t(0)); break;
    case FieldDataType_Byte: out->raw(uint8_t(0)); break;
    default:
        if (++o.bitCount == 8) {
            out->raw(uint8_t(o.bitAcc));
            o.bitAcc = 0;
            o.bitCount = 0;
        }
        break;
    }
}

void flushBits(Sink *out, VarOut &o) {
    if (o.type == FieldDataType_Bit && o.bitCount > 0) out->raw(uint8_t(o.bitAcc));
    o.bitAcc = 0;
    o.bitCount = 0;
}

}  // namespace

namespace {

struct ZoneWork {
    ZoneWork(ZoneHeader &header, int number, bool isWritten) : z(header), zoneNumber(number), written(isWritten) {}
    ZoneHeader &z;
    int zoneNumber;
    bool written;
    bool openI = false, openE = false;
    Keep1 keep[3];
    bool skipping = false;
    std::vector<double> nodeIds;  // the NV variable's values
};

}  // namespace

static bool missingValue(Converter &c, int64_t i, int64_t j, int64_t k, int v) {
    char message[200];
    if (c.tok.kind == Tok_EOF)
        snprintf(message, sizeof(message), "Unexpected end of file after location I,J,K,Var = %lld,%lld,%lld,%d",
                 (long long)i, (long long)j, (long long)k, v);
    else
        snprintf(message, sizeof(message), "Expecting a value after location I,J,K,Var = %lld,%lld,%lld,%d",
                 (long long)i, (long long)j, (long long)k, v);
    return c.failTok(message);
}

namespace {

// Serves the next value, a repeat's copies first. False on a parse error.
inline bool haveValue(Converter &c) { return c.repeatLeft > 0 || c.tok.kind == Tok_Number; }
inline bool takeValue(Converter &c, double *v) {
    if (c.repeatLeft > 0) {
        c.repeatLeft--;
        *v = c.repeatValue;
        return true;
    }
    *v = c.tok.value;
    c.repeatValue = c.tok.value;
    c.repeatLeft = c.tok.repeat - 1;
    return c.advance();
}

bool readValues(Converter &c, ZoneWork &w, ZoneKeep &keep, Sink *out, std::vector<VarOut> &vars) {
    ZoneHeader &z = w.z;
    double v;
    int nvVar = z.nvGiven ? int(z.nv) - 1 : -1;
    auto put = [&](VarOut &o, double value) {
        putValue(out, o, value);
        if (o.var == nvVar) w.nodeIds.push_back(value);
    };
    if (!z.isFE) {
        int64_t I = keep.i, J = keep.j, K = keep.k;
        if (!z.point) {
            for (VarOut &o : vars) {
                if (o.cellCentered) {
                    int64_t sI = I, sJ = J, sK = K;
                    if (K >= 2) sK = K - 1;
                    else if (J >= 2) sJ = J - 1, sK = 1;
                    else if (I >= 2) sI = I - 1, sJ = 1, sK = 1;
                    else sI = sJ = sK = 1;
                    int64_t cI = std::max<int64_t>(I - 1, 1), cJ = std::max<int64_t>(J - 1, 1);
                    for (int64_t k = 0; k < sK; k++)
                        for (int64_t j = 0; j < sJ; j++)
                            for (int64_t i = 0; i < sI; i++) {
                                if (i >= cI || j >= cJ) {  // a ghost slot
                                    putGhost(out, o);
                                    continue;
                                }
                                if (!haveValue(c)) return missingValue(c, i + 1, j + 1, k + 1, o.var + 1);
                                if (!takeValue(c, &v)) return false;
                                put(o, v);
                            }
                } else {
                    for (int64_t k = 0; k < K; k++)
                        for (int64_t j = 0; j < J; j++)
                            for (int64_t i = 0; i < I; i++) {
                                if (!haveValue(c)) return missingValue(c, i + 1, j + 1, k + 1, o.var + 1);
                                if (!takeValue(c, &v)) return false;
                                if (!w.skipping || (w.keep[0].kept(i + 1, I) && w.keep[1].kept(j + 1, J) &&
                                                    w.keep[2].kept(k + 1, K)))
                                    put(o, v);
                            }
                }
                flushBits(out, o);
            }
            return true;
        }
        int64_t i = 0, j = 0, k = 0;
        for (int64_t p = 0; w.openI || p < I * J * K; p++) {
            if (w.openI && !haveValue(c)) {
                keep.i = p;
                return true;
            }
            if (!w.openI) {
                i = p % I;
                j = (p / I) % J;
                k = p / (I * J);
            } else {
                i = p;
            }
            bool kept = !w.skipping || (w.keep[0].kept(i + 1, w.openI ? INT64_MAX : I) && w.keep[1].kept(j + 1, J) &&
                                        w.keep[2].kept(k + 1, K));
            for (VarOut &o : vars) {
                if (!haveValue(c)) {
                    if (c.tok.kind == Tok_EOF) {
                        char message[200];
                        snprintf(message, sizeof(message), "Unexpected End of file.  Need more values, IJK=%lld,%lld,%lld",
                                 (long long)i + 1, (long long)j + 1, (long long)k + 1);
                        return c.failTok(message);
                    }
                    return missingValue(c, i + 1, j + 1, k + 1, o.var + 1);
                }
                if (!takeValue(c, &v)) return false;
                if (kept) put(o, v);
            }
        }
        return true;
    }
    // Finite elements.
    if (!z.point) {
        for (VarOut &o : vars) {
            int64_t count = o.cellCentered ? keep.k : keep.i;
            for (int64_t n = 0; n < count; n++) {
                if (!haveValue(c)) {
                    if (c.tok.kind == Tok_EOF) {
                        char message[200];
                        snprintf(message, sizeof(message), "Unexpected End of file.  Need to process %lld more values.",
                                 (long long)(count - n));
                        return c.failTok(message);
                    }
                    return missingValue(c, n + 1, 1, 1, o.var + 1);
                }
                if (!takeValue(c, &v)) return false;
                put(o, v);
            }
            flushBits(out, o);
        }
        return true;
    }
    for (int64_t n = 0; n < keep.i; n++)
        for (VarOut &o : vars) {
            if (!haveValue(c)) {
                if (c.tok.kind == Tok_EOF) {
                    char message[200];
                    snprintf(message, sizeof(message), "Unexpected End of file.  Need more values, IJK=%lld,%d,%d",
                             (long long)n + 1, 1, 1);
                    return c.failTok(message);
                }
                return missingValue(c, n + 1, 1, 1, o.var + 1);
            }
            if (!takeValue(c, &v)) return false;
            put(o, v);
        }
    return true;
}

}  // namespace

namespace {

// Connectivity, one-based in the text, zero-based in the file; with NV through the node identifiers.
bool readConnectivity(Converter &c, ZoneWork &w, ZoneKeep &keep, Sink *out) {
    ZoneHeader &z = w.z;
    int nodesPerElement = GetNodesPerElement(z.type);
    std::vector<std::pair<double, int32_t>> ids;  // (identifier, node), sorted
    if (z.nvGiven) {
        ids.reserve(w.nodeIds.size());
        for (size_t n = 0; n < w.nodeIds.size(); n++) ids.emplace_back(w.nodeIds[n], int32_t(n));
        // Stable order keeps a repeated identifier at its first position.
        std::stable_sort(ids.begin(), ids.end(),
                         [](const auto &a, const auto &b) { return a.first < b.first; });
    }
    char message[200];
    int64_t element = 0;
    for (; w.openE || element < keep.k; element++) {
        if (!haveValue(c)) {
            if (w.openE) break;
            return c.failTok("Not enough elements in Connectivity list");
        }
        for (int n = 0; n < nodesPerElement; n++) {
            double v;
            if (!haveValue(c)) {
                snprintf(message, sizeof(message), "Err: Bad or Missing FE Cell Indices for Cell %lld\n",
                         (long long)element + 1);
                return c.failRaw(message);
            }
            if (!takeValue(c, &v)) return false;
            int64_t node = int64_t(roundHalf(v));
            if (z.nvGiven) {
                auto it = std::lower_bound(ids.begin(), ids.end(), v,
                                           [](const auto &a, double key) { return a.first < key; });
                if (it == ids.end() || it->first != v) {
                    snprintf(message, sizeof(message), "Err: FE Cell %lld has index of %lld not found in Node Variable\n",
                             (long long)element + 1, (long long)node);
                    return c.failRaw(message);
                }
                out->i32(it->second);
                continue;
            }
            if (node < 1 || node > keep.i) {
                snprintf(message, sizeof(message), "Err: FE Cell %lld has bad index of %lld\n", (long long)element + 1,
                         (long long)node);
                return c.failRaw(message);
            }
            out->i32(int32_t(node - 1));
        }
    }
    keep.k = element;
    return true;
}

// User-defined face neighbours: tuples until the count of neighbours is reached.
bool readFaceNeighbors(Converter &c, ZoneWork &w, Sink *out) {
    ZoneHeader &z = w.z;
    bool global = z.fnMode == 2 || z.fnMode == 3, many = z.fnMode == 1 || z.fnMode == 3;
    int64_t neighbors = 0;
    auto integer = [&](int64_t *value) {
        double v;
        if (!haveValue(c)) return c.failTok("Invalid face neighbor tuple.");
        if (!takeValue(c, &v)) return false;
        *value = int64_t(roundHalf(v));
        return true;
    };
    auto zeroBased = [](int64_t n) { return int32_t(n == 0 ? -1 : n - 1); };
    while (neighbors < z.fnConnections) {
        int64_t element, face, obscures = 0, count = 1;
        if (!integer(&element) || !integer(&face)) return false;
        if (many && (!integer(&obscures) || !integer(&count))) return false;
        if (element < 1 || face < 1 || count < 1 || count > z.fnConnections - neighbors)
            return c.failTok("Invalid face neighbor tuple.");
        out->i32(int32_t(element - 1));
        out->i32(int32_t(face - 1));
        if (many) {
            out->i32(int32_t(obscures));
            out->i32(int32_t(count));
        }
        for (int64_t n = 0; n < count; n++) {
            int64_t zone = 0, neighbor;
            if (global && !integer(&zone)) return false;
            if (!integer(&neighbor)) return false;
            if (global && zone == w.zoneNumber + 1)
                return c.failTok("The current zone for a user defined face neighbor must be identified by a 0 and not "
                                 "the current zone number.");
            if (global && neighbor == 0 && zone != 0)
                return c.failTok("If the element's face neighbor is defined as a boundary then the zone must be 0.");
            if (zone < 0 || neighbor < 0) return c.failTok("Invalid face neighbor tuple.");
            if (global) out->i32(zeroBased(zone));
            out->i32(zeroBased(neighbor));
        }
        neighbors += count;
    }
    return true;
}

}  // namespace

bool Converter::parseZone() {
    int zoneNumber = zonesRead;
    if (zonesRead >= MaxFenrowZones) return failTok("Maximum number of zones exceeded (increase $!Limits MaxFenrowZones)");
    ZoneHeader z;
    if (tok.kind == Tok_Record) {
        if (!advance()) return false;
        while (tok.kind == Tok_Word)
            if (!zoneKeyword(z, tok.text)) return false;
    }
    if (z.zoneTypeGiven || z.dataPackingGiven) {
        if (!z.dataPackingGiven) z.point = false;
        z.isFE = z.type != ZoneType_Ordered;
    } else if (z.isFE) {
        if (!z.etGiven) z.type = ZoneType_FEQuad;
    } else {
        z.type = ZoneType_Ordered;
    }
    if (z.nvGiven && !z.nGiven) return failTok("Cannot specify NV without also specifying N");
    if (!z.isFE && z.feKeyGiven)
        return failTok("N, E, NV, ICELLDIM, JCELLDIM, KCELLDIM or ET flag used for non-FE type data");
    if (!varsKnown) {
        if (!z.point) return failTok("VARIABLES= statement must be used if\nfirst zone format is not POINT");
        int count = 2;
        if (tok.kind == Tok_Number && !countFirstLine(&count)) return false;
        if (!setNumVars(std::max(count, 1))) return false;
    }
    size_t nv = size_t(numVars);
    z.types.resize(nv, FieldDataType_Float);
    if (z.passive.size() > nv) return failTok("Invalid set member.");
    z.passive.resize(nv, false);
    if (z.locations.size() > nv) return failTok("Invalid set member.");
    z.locations.resize(nv, ValueLocation_Nodal);
    z.shareZone.assign(nv, -1);
    for (auto [v, from] : z.sharePairs) {
        if (size_t(v) >= nv || v < 0) return failTok("Invalid value for dup var Assignment");
        z.shareZone[size_t(v)] = from;
    }
    int source = z.connectivityShare;
    for (size_t v = 0; v < nv && source < 0; v++) source = z.shareZone[v];
    if (source >= 0 && zoneNumber == 0)
        return failTok("Not allowed to share variables or connectivity list for first zone");
    if (z.connectivityShare >= 0 && zones[size_t(z.connectivityShare)].type != z.type)
        return failTok("Connectivity list can only share from a zone of the same type.");
    bool anyCellCentered = false;
    for (size_t v = 0; v < nv; v++) {
        if (z.point && z.types[v] == FieldDataType_Bit)
            return failTok("Not allowed to use BIT data type when data format is POINT or FEPOINT");
        anyCellCentered = anyCellCentered || z.locations[v] == ValueLocation_CellCentered;
    }
    if (anyCellCentered && z.point) return failTok("Invalid datafile: cell centered variable must be in block format.");

    bool written = !opt.haveZoneList || (size_t(zoneNumber) < opt.zoneList.size() && opt.zoneList[size_t(zoneNumber)]);
    ZoneWork w(z, zoneNumber, written);
    ZoneKeep keep;
    keep.type = z.type;
    keep.locations = z.locations;
    if (!z.isFE) {
        bool none = !z.iGiven && !z.jGiven && !z.kGiven;
        if (none && source >= 0 && zones[size_t(source)].type == ZoneType_Ordered) {
            keep.i = zones[size_t(source)].i, keep.j = zones[size_t(source)].j, keep.k = zones[size_t(source)].k;
        } else {
            if (!z.iGiven && !z.point) return failTok("Zone must at least contain I identifier for BLOCK format");
            w.openI = none;
            keep.i = z.iGiven ? z.i : 0;
            keep.j = z.jGiven ? z.j : 1;
            keep.k = z.kGiven ? z.k : 1;
            if (!(keep.i == 0 && keep.j == 0 && keep.k == 0) && !w.openI) {
                if (keep.i == 0) return failTok("I must be greater than 0 if specified");
                if (keep.j == 0) return failTok("J must be greater than 0 if specified");
                if (keep.k == 0) return failTok("K must be greater than 0 if specified");
            }
        }
        for (int d = 0; d < 3; d++)
            for (const IndexRange &r : opt.ranges[d])
                if (r.zone == 0 || r.zone == zoneNumber + 1) {
                    w.keep[d] = Keep1{r.start, r.end, std::max(r.skip, 1), true};
                    w.skipping = true;
                }
        if (w.skipping && anyCellCentered)
            return failTok("Index skipping is not available for cell centered variables.");
    } else {
        keep.i = z.nGiven ? z.n : 0;
        keep.k = z.eGiven ? z.e : 0;
        if (source >= 0 && zones[size_t(source)].type != ZoneType_Ordered) {
            if (!z.nGiven) keep.i = zones[size_t(source)].i;
            if (!z.eGiven) keep.k = zones[size_t(source)].j;
        } else if (!z.eGiven) {
            w.openE = true;
        }
        if (keep.i <= 0) return failTok("Must Specify N (greater than 0)) for FE formats");
        if (z.nvGiven && z.nv <= 0) return failTok("NV must be greater than 0 if specified");
        if (z.nv > numVars) return failTok("NV is set greater than the number of variables");
        if (z.nvGiven && (z.passive[size_t(z.nv - 1)] || z.shareZone[size_t(z.nv - 1)] >= 0))
            return failTok("NV must name a variable whose values are given in the zone.");
        if (w.openE && anyCellCentered) return failTok("Must Specify E for cell centered variables in FE formats");
    }
    // A zone left out by -zonelist has nothing in the output to share.
    for (size_t v = 0; v < nv; v++)
        if (written && z.shareZone[v] >= 0 && zones[size_t(z.shareZone[v])].fileZone < 0)
            return failTok("Variables can only share from a lower numbered zone.");
    if (written && z.connectivityShare >= 0 && zones[size_t(z.connectivityShare)].fileZone < 0)
        return failTok("Connectivity list can only share from a lower numbered zone.");

    // The data record.
    Sink discard(nullptr);
    discard.discard = true;
    Sink *out = written ? data : &discard;
    out->f32(ZoneMarker);
    bool anyPassive = false, anyShared = false;
    for (size_t v = 0; v < nv; v++) {
        out->i32(z.types[v]);
        anyPassive = anyPassive || z.passive[v];
        anyShared = anyShared || z.shareZone[v] >= 0;
    }
    out->i32(anyPassive ? 1 : 0);
    for (size_t v = 0; anyPassive && v < nv; v++) out->i32(z.passive[v] ? 1 : 0);
    out->i32(anyShared ? 1 : 0);
    for (size_t v = 0; anyShared && v < nv; v++)
        out->i32(z.shareZone[v] >= 0 ? zones[size_t(z.shareZone[v])].fileZone : -1);
    out->i32(z.connectivityShare >= 0 ? zones[size_t(z.connectivityShare)].fileZone : -1);
    bool placeholder = !z.isFE && keep.i == 0 && keep.j == 0 && keep.k == 0 && !w.openI;
    if (!placeholder) {
        std::vector<VarOut> vars;
        for (size_t v = 0; v < nv; v++)
            if (!z.passive[v] && z.shareZone[v] < 0) {
                VarOut o;
                o.var = int(v);
                o.type = z.types[v];
                o.cellCentered = z.locations[v] == ValueLocation_CellCentered;
                vars.push_back(o);
                out->f64(0.0), out->f64(0.0);
            }
        int64_t minMaxAt = out->position() - int64_t(vars.size()) * 16;
        repeatLeft = 0;
        if (!readValues(*this, w, keep, out, vars)) return false;
        Sink pairs(nullptr);
        pairs.swap = out->swap;
        for (const VarOut &o : vars) pairs.f64(o.min), pairs.f64(o.max);
        out->patch(minMaxAt, std::vector<char>(pairs.buf.begin(), pairs.buf.begin() + long(pairs.used)));
        if (z.isFE && z.connectivityShare < 0 && !readConnectivity(*this, w, keep, out)) return false;
        if (z.fnConnections > 0 && z.connectivityShare < 0 && !readFaceNeighbors(*this, w, out)) return false;
        repeatLeft = 0;
    }
    if (w.openI && keep.i == 0) return failTok("Expecting a value");

    // The zone record, now that the sizes are known.
    if (written) {
        Sink &h = *header;
        h.f32(ZoneMarker);
        char defaultName[32];
        snprintf(defaultName, sizeof(defaultName), "ZONE %03d", zoneNumber + 1);
        h.text(z.nameGiven ? z.name : std::string(defaultName));
        int parent = z.parent;
        if (parent >= 0 && opt.haveZoneList) parent = size_t(parent) < zones.size() ? zones[size_t(parent)].fileZone : -1;
        h.i32(parent);
        h.i32(z.strandGiven ? z.strand - 1 : z.timeGiven ? -2 : -1);
        h.f64(z.solutionTime);
        h.i32(z.color);
        h.i32(zoneTypeFileCode(z.type));
        h.i32(z.point ? 1 : 0);
        h.i32(anyCellCentered ? 1 : 0);
        for (size_t v = 0; anyCellCentered && v < nv; v++) h.i32(z.locations[v] == ValueLocation_CellCentered ? 1 : 0);
        h.i32(0);
        h.i32(int32_t(z.fnConnections));
        if (z.fnConnections > 0) {
            h.i32(z.fnMode);
            if (z.isFE) h.i32(z.fnComplete ? 1 : 0);
        }
        if (!z.isFE) {
            h.i32(int32_t(w.keep[0].count(keep.i)));
            h.i32(int32_t(w.keep[1].count(keep.j)));
            h.i32(int32_t(w.keep[2].count(keep.k)));
        } else {
            h.i32(int32_t(keep.i)), h.i32(int32_t(keep.k));
            for (int64_t d : z.cellDim) h.i32(int32_t(d));
        }
        for (const auto &[name, value] : z.aux) {
            h.i32(1);
            h.text(name);
            h.i32(0);
            h.text(value);
        }
        h.i32(0);
        keep.fileZone = zonesWritten++;
    }
    if (z.isFE) keep.j = keep.k;  // FE: I holds the points, J the elements
    zones.push_back(keep);
    parents.push_back(z.parent);
    zonesRead++;
    if (opt.haveZoneList && opt.stopAfterLastZone && zoneNumber >= opt.lastListedZone) stop = true;
    return true;
}

// A text record: keywords until the first token that is no word, then the record in the file's
// units: frame positions, frame heights, margins and line thickness as fractions, angles in radians.
bool Converter::parseText() {
    static const char *const coordSysNames[] = {"GRID", "FRAME", "WINDOW", "XYZGRID", "GRID3D"};
    static const int coordSysCodes[] = {0, 1, 1, 6, 6};
    static const char *const scopeNames[] = {"GLOBAL", "LOCAL"};
    static const char *const anchorNames[] = {"LEFT", "CENTER", "RIGHT", "MIDLEFT", "MIDCENTER", "MIDRIGHT",
                                              "HEADLEFT", "HEADCENTER", "HEADRIGHT"};
    static const char *const unitNames[] = {"GRID", "FRAME", "POINT"};
    static const char *const boxNames[] = {"NOBOX", "FILLED", "HOLLOW"};
    static const char *const fontNames[] = {"HELV", "HELV-BOLD", "GREEK", "MATH", "USER-DEF", "TIMES", "TIMES-ITALIC",
                                            "TIMES-BOLD", "TIMES-ITALIC-BOLD", "COURIER", "COURIER-BOLD"};
    static const char *const clipNames[] = {"CLIPTOAXES", "CLIPTOVIEWPORT", "CLIPTOFRAME"};
    int coordSys = -1, scope = 0, anchor = 0, units = 1, box = 0, boxFill = 7, boxOutline = 0, font = 1, color = 0;
    int clipping = 0, zone = -1;
    bool window = false, cartesian = false, polar = false, unitsGiven = false;
    double x = 0, y = 0, zValue = 0, lineThickness = 0.4, lineSpacing = 1, angle = 0, margin = 10, height = 3;
    std::string text, macro;
    if (!advance()) return false;
    while (tok.kind == Tok_Word) {
        std::string key = tok.text;
        for (char &c : key) c = char(toupper((unsigned char)c));
        bool ok;
        if (key == "T" || key == "MFC") {
            ok = expectEquals("Missing an Equals sign") &&
                 wordValue(key == "T" ? &text : &macro, "Missing or Invalid character string");
        } else if (key == "X" || key == "Y" || key == "Z" || key == "R" || key == "THETA") {
            ok = anchorValue(key, &cartesian, &polar, &x, &y, &zValue);
        } else if (key == "CS" || key == "M") {
            int n = 0;
            ok = choiceValue("Missing an Equals sign", coordSysNames, 5, &n);
            coordSys = coordSysCodes[n];
            window = n == 2;
            if (key == "M" && coordSys == 0 && !unitsGiven) units = 0;
        } else if (key == "S") {
            ok = choiceValue("Missing an Equals sign", scopeNames, 2, &scope);
        } else if (key == "AN") {
            ok = choiceValue("Missing an Equals sign", anchorNames, 9, &anchor);
        } else if (key == "HU") {
            ok = choiceValue("Missing an Equals sign", unitNames, 3, &units);
            unitsGiven = true;
        } else if (key == "LT") {
            ok = rangedValue(0.0001, 100, &lineThickness);
        } else if (key == "LS") {
            ok = rangedValue(0, 5, &lineSpacing);
        } else if (key == "A") {
            ok = rangedValue(-360, 360, &angle);
        } else if (key == "ZN") {
            int64_t n;
            ok = expectEquals("Missing an Equals sign") && intValue(&n);
            zone = int(n) - 1;
        } else if (key == "BX") {
            ok = choiceValue("Missing an Equals sign", boxNames, 3, &box);
        } else if (key == "BXF" || key == "BXO" || key == "C") {
            ok = expectEquals("Missing Equals Sign in Color Assignment") &&
                 colorValue(key == "BXF" ? &boxFill : key == "BXO" ? &boxOutline : &color);
        } else if (key == "BXM") {
            ok = rangedValue(0, 2000, &margin);
        } else if (key == "F") {
            ok = choiceValue("Missing an Equals sign", fontNames, 11, &font);
        } else if (key == "H") {
            ok = rangedValue(0, 1.0e150, &height);
        } else if (key == "CLIPPING") {
            ok = choiceValue("Missing an Equals sign", clipNames, 3, &clipping);
            clipping = clipping == 2 ? 1 : 0;
        } else {
            return failTok("Bad Identifier in Text header");
        }
        if (!ok) return false;
    }
    if (coordSys == 1 && units == 0)
        return failTok("Cannot use GRID height units for text positioned using FRAME coordinates.");
    if (coordSys < 0) {
        // Unset: frame percent, unless both lie strictly within 0 and 1 (an old window position).
        window = x > 0 && x < 1 && y > 0 && y < 1;
        coordSys = 1;
    }
    if (coordSys == 1 && !window) x *= 0.01, y *= 0.01;
    if (units == 1) height *= 0.01;
    Sink &h = *header;
    h.f32(499.0f);
    h.i32(coordSys == 6 ? 4 : coordSys);
    h.i32(scope);
    h.f64(x), h.f64(y), h.f64(zValue);
    h.i32(font), h.i32(units);
    h.f64(height);
    h.i32(box);
    h.f64(margin * 0.01), h.f64(lineThickness * 0.01);
    h.i32(boxOutline), h.i32(boxFill);
    h.f64(angle / 57.29577951308232), h.f64(lineSpacing);
    h.i32(anchor), h.i32(zone), h.i32(color);
    h.text(macro);
    h.i32(clipping);
    h.text(text);
    return true;
}

// A geometry record: keywords as for text, then the sizes or the polylines. Frame values are
// percent in the text and fractions in the file.
bool Converter::parseGeometry() {
    static const char *const coordSysNames[] = {"GRID", "FRAME", "WINDOW", "XYZGRID", "GRID3D"};
    static const int coordSysCodes[] = {0, 1, 1, 6, 6};
    static const char *const scopeNames[] = {"GLOBAL", "LOCAL"};
    static const char *const orderNames[] = {"AFTERDATA", "BEFOREDATA"};
    static const char *const patternNames[] = {"SOLID", "DASHED", "DASHDOT", "DOTTED", "LONGDASH", "DASHDOTDOT"};
    static const char *const styleNames[] = {"PLAIN", "FILLED", "HOLLOW"};
    static const char *const attachNames[] = {"NONE", "BEGINNING", "END", "BOTH"};
    static const char *const typeNames[] = {"LINE", "RECTANGLE", "SQUARE", "CIRCLE", "ELLIPSE", "LINE3D"};
    static const char *const dataTypeNames[] = {"SINGLE", "FLOAT", "DOUBLE", "LONGINT", "SHORTINT", "BYTE", "BIT"};
    static const char *const clipNames[] = {"CLIPTOAXES", "CLIPTOVIEWPORT", "CLIPTOFRAME"};
    int coordSys = -1, scope = 0, drawOrder = 0, zone = -1, color = 0, fillColor = 0, isFilled = 0, type = 0;
    int pattern = 0, arrowStyle = 0, arrowAttach = 0, clipping = 0, dataType = 1, point = 1;
    double ellipsePoints = 72;
    bool window = false, cartesian = false, polar = false;
    double x = 0, y = 0, zValue = 0, patternLength = 4, lineThickness = 0.1, arrowSize = 5, arrowAngle = 20;
    std::string macro;
    if (!advance()) return false;
    while (tok.kind == Tok_Word) {
        std::string key = tok.text;
        for (char &c : key) c = char(toupper((unsigned char)c));
        bool ok;
        int n = 0;
        if (key == "MFC") {
            ok = expectEquals("Missing an Equals sign") && wordValue(&macro, "Missing or Invalid character string");
        } else if (key == "X" || key == "Y" || key == "Z" || key == "R" || key == "THETA") {
            ok = anchorValue(key, &cartesian, &polar, &x, &y, &zValue);
        } else if (key == "CS" || key == "M") {
            ok = choiceValue("Missing an Equals sign", coordSysNames, 5, &n);
            coordSys = coordSysCodes[n];
            window = n == 2;
        } else if (key == "S") {
            ok = choiceValue("Missing an Equals sign", scopeNames, 2, &scope);
        } else if (key == "DRAWORDER") {
            ok = choiceValue("Missing an Equals sign", orderNames, 2, &drawOrder);
        } else if (key == "ZN") {
            int64_t number;
            ok = expectEquals("Missing an Equals sign") && intValue(&number);
            zone = int(number) - 1;
        } else if (key == "C" || key == "FC") {
            ok = expectEquals("Missing Equals Sign in Color Assignment") && colorValue(key == "C" ? &color : &fillColor);
            if (key == "FC") isFilled = 1;
        } else if (key == "EP") {
            if (!expectEquals("Missing an Equals sign")) return false;
            if (tok.kind == Tok_Number && (tok.value < 3 || tok.value > 720))
                return failTok("Invalid number of ellipse points");
            ok = doubleValue(&ellipsePoints);
        } else if (key == "PL") {
            ok = rangedValue(0.01, 100, &patternLength);
        } else if (key == "LT") {
            ok = rangedValue(0.0001, 100, &lineThickness);
        } else if (key == "L") {
            ok = choiceValue("Missing Equals Sign in line type assignment", patternNames, 6, &pattern);
        } else if (key == "AST") {
            ok = choiceValue("Missing an Equals sign", styleNames, 3, &arrowStyle);
        } else if (key == "AAT") {
            ok = choiceValue("Missing an Equals sign", attachNames, 4, &arrowAttach);
        } else if (key == "ASZ") {
            ok = rangedValue(0, 50, &arrowSize);
        } else if (key == "AAN") {
            ok = rangedValue(1, 90, &arrowAngle);
        } else if (key == "DT") {
            ok = choiceValue("Missing Equals Sign in Data Type Assignment", dataTypeNames, 7, &n);
            if (ok && n >= 3)
                return lex.failAt("Only allowed to use LONGINT, SHORTINT,\nBYTE and BIT data types with zone\nfield data",
                                  tok.line, tok.col);
            dataType = n == 2 ? 2 : 1;
        } else if (key == "T") {
            ok = choiceValue("Missing Equals Sign in geometry type assignment", typeNames, 6, &type);
            if (type == 5) type = 0, coordSys = 6;
        } else if (key == "CLIPPING") {
            ok = choiceValue("Missing an Equals sign", clipNames, 3, &clipping);
            clipping = clipping == 2 ? 1 : 0;
        } else if (key == "DATAPACKING" || key == "F") {
            ok = choiceValue(key == "F" ? "Missing Equals sign for Format Specifier"
                                   : "Missing Equals sign for DATAPACKING Specifier", PackingNames, 2, &n);
            point = n == 0;
        } else {
            return failTok("Bad Identifier in Geometry header");
        }
        if (!ok) return false;
    }
    if (coordSys < 0) {
        window = x > 0 && x < 1 && y > 0 && y < 1;
        coordSys = 1;
    }
    double scale = coordSys == 1 && !window ? 0.01 : 1.0;
    if (coordSys == 1) {
        if (x < 0 || y < 0) return failTok("Geometry origins may not be negative in frame coordinates.");
        if (x * scale > 1.0 || y * scale > 1.0) return failTok("Frame coordinate Geometry is anchored outside of frame");
    }
    if (coordSys == 6 && type != 0) return failTok("Bad Value");
    Sink &h = *header;
    h.f32(399.0f);
    h.i32(coordSys == 6 ? 4 : coordSys);
    h.i32(scope), h.i32(drawOrder);
    h.f64(x * scale), h.f64(y * scale), h.f64(zValue);
    h.i32(zone), h.i32(color), h.i32(fillColor), h.i32(isFilled), h.i32(type), h.i32(pattern);
    h.f64(patternLength * 0.01), h.f64(lineThickness * 0.01);
    h.i32(int32_t(ellipsePoints)), h.i32(arrowStyle), h.i32(arrowAttach);
    h.f64(arrowSize * 0.01), h.f64(arrowAngle);
    h.text(macro);
    h.i32(dataType), h.i32(clipping);
    auto put = [&](double v) {
        if (dataType == 1) h.f32(float(v));
        else h.f64(v);
    };
    auto number = [&](const char *message, double *v) {
        if (tok.kind != Tok_Number) return failTok(message);
        *v = tok.value;
        return advance();
    };
    double v;
    if (type != 0) {
        for (int n = 0; n < (type == 1 || type == 4 ? 2 : 1); n++) {
            if (!number("Bad Value", &v)) return false;
            put(v * scale);
        }
        return true;
    }
    if (tok.kind != Tok_Number) return failTok("Bad value for Number of Polylines in Geometry");
    if (tok.value < 1) return failTok("Geometry has invalid number of polylines.");
    if (tok.value > 50) return failTok("Geometry has too many polylines.\nUse separate geometries for each polyline.");
    int numLines = int(tok.value);
    if (!advance()) return false;
    h.i32(numLines);
    int dims = coordSys == 6 ? 3 : 2;
    static const char *const badValue[] = {"Bad value for X in Geometry", "Bad value for Y Geometry",
                                           "Bad value for Z Geometry"};
    for (int line = 0; line < numLines; line++) {
        if (tok.kind != Tok_Number || tok.value < 1 || tok.value > GeneralBase.MaxPtsInALine)
            return failTok("Geometry segment has invalid number of points");
        int numPts = int(tok.value);
        if (!advance()) return false;
        h.i32(numPts);
        std::vector<double> coords(size_t(numPts) * size_t(dims));
        for (int p = 0; p < numPts * dims; p++) {
            int d = point ? p % dims : p / numPts;
            int pt = point ? p / dims : p % numPts;
            if (!number(badValue[d], &v)) return false;
            coords[size_t(d) * size_t(numPts) + size_t(pt)] = d < 2 ? v * scale : v;
        }
        for (double c : coords) put(c);
    }
    return true;
}

bool Converter::parseRecords() {
    while (!stop) {
        if (tok.kind == Tok_EOF) return true;
        if ((tok.kind == Tok_Number && zonesRead == 0) || (tok.kind == Tok_Record && tok.record == Rec_Zone)) {
            if (!parseZone()) return false;
            continue;
        }
        if (tok.kind != Tok_Record) {
            skipRestOfLine();
            if (!advance()) return false;
            continue;
        }
        switch (tok.record) {
        case Rec_Text:
            if (!parseText()) return false;
            break;
        case Rec_Geometry:
            if (!parseGeometry()) return false;
            break;
        case Rec_CustomLabels: {
            if (!advance()) return false;
            std::vector<std::string> labels;
            while (tok.kind == Tok_String) {
                if (labels.size() >= 50000) return failTok("Too many custom labels");
                labels.push_back(tok.text);
                if (!advance()) return false;
            }
            if (labels.empty()) return failTok("Expecting a string");
            header->f32(CustomLabelMarker);
            header->i32(int32_t(labels.size()));
            for (const std::string &label : labels) header->text(label);
            break;
        }
        case Rec_UserRec:
            if (!expectEquals("Missing an Equals sign")) return false;
            if (tok.kind != Tok_String) return failTok("Expecting a string");
            header->f32(UserRecMarker);
            header->text(tok.text.substr(0, 500));
            if (!advance()) return false;
            break;
        case Rec_DataSetAux: {
            std::string name, value;
            if (!advance() || !auxPair("DATASETAUXDATA", &name, &value)) return false;
            header->f32(DataSetAuxMarker);
            header->text(name);
            header->i32(0);
            header->text(value);
            break;
        }
        case Rec_VarAux: {
            std::string name, value;
            if (!advance()) return false;
            int64_t var = 0;
            if (tok.kind != Tok_Number || !toInt(tok.value, &var) || var < 1 || (varsKnown && var > numVars))
                return failTok("VARAUXDATA variable index is not a valid variable.");
            if (!advance() || !auxPair("VARAUXDATA", &name, &value)) return false;
            maxVarAuxVar = std::max(maxVarAuxVar, int(var - 1));
            header->f32(VarAuxMarker);
            header->i32(int32_t(var - 1));
            header->text(name);
            header->i32(0);
            header->text(value);
            break;
        }
        default:
            skipRestOfLine();
            if (!advance()) return false;
            break;
        }
    }
    return true;
}

namespace {

char *newString(const std::string &text) {
    auto *copy = static_cast<char *>(newmalloc(text.size() + 1));
    if (copy != nullptr) memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

std::string lowered(const char *text) {
    std::string out = text;
    for (char &c : out) c = char(tolower((unsigned char)c));
    return out;
}

// "1-3,5" or "[1-3,5]": one-based members.
bool parseZoneList(const char *text, Options *opt) {
    std::vector<std::pair<long, long>> ranges;
    if (!FenrowParseRangeList(text, MaxFenrowZones, &ranges)) return false;
    for (const auto &[first, last] : ranges) {
        if (opt->zoneList.size() < size_t(last)) opt->zoneList.resize(size_t(last), false);
        for (long z = first; z <= last; z++) opt->zoneList[size_t(z - 1)] = true;
        opt->lastListedZone = std::max(opt->lastListedZone, int(last - 1));
    }
    opt->haveZoneList = true;
    return true;
}

// "z,s,e,k", trailing parts optional.
bool parseRange(const char *text, IndexRange *range) {
    long values[4] = {0, 1, 0, 1};
    const char *p = text;
    for (int n = 0; n < 4 && *p != '\0'; n++) {
        char *end = nullptr;
        if (*p != ',') {
            values[n] = strtol(p, &end, 10);
            if (end == p) return false;
            p = end;
        }
        if (*p == ',') p++;
        else if (*p != '\0') return false;
    }
    if (values[0] < 0 || values[1] < 1 || values[2] < 0 || values[3] < 1) return false;
    *range = IndexRange{int(values[0]), int(values[1]), int(values[2]), int(values[3])};
    return true;
}

struct FileGuard {
    FILE *file = nullptr;
    ~FileGuard() {
        if (file != nullptr && file != stdin) fclose(file);
    }
};

}  // namespace

bool Fenrow(int argc, char **argv, char **errorText) {
    *errorText = nullptr;
    Converter c;
    c.lex.err = &c.err;
    auto plainError = [&](const std::string &message) {
        *errorText = newString("Err: " + message);
        return false;
    };
    // The PLOT3D options only matter with -plot3d; they are taken quietly otherwise.
    Plot3dOptions p3;
    bool plot3d = false;
    for (int a = 1; a < argc; a++) {
        const char *arg = argv[a];
        if (arg[0] == '-' && strlen(arg) >= 2) {
            std::string flag = lowered(arg);
            if (flag == "-d" || (flag.size() == 3 && flag[1] == 'd' && isdigit((unsigned char)flag[2]))) continue;
            if (flag == "-iset" || flag == "-jset" || flag == "-kset") {
                IndexRange range;
                if (a + 1 >= argc || !parseRange(argv[a + 1], &range)) return plainError("Bad " + flag + " range");
                c.opt.ranges[flag[1] - 'i'].push_back(range);
                a++;
            } else if (flag == "-zonelist") {
                if (a + 1 >= argc || !parseZoneList(argv[a + 1], &c.opt)) return plainError("Bad zoneset");
                a++;
            } else if (flag == "-stopafterlastzone") {
                c.opt.stopAfterLastZone = true;
            } else if (flag == "-foreignplt") {
                c.opt.foreign = true;
            } else if (flag == "-plot3d") {
                plot3d = true;
            } else if (flag == "-ip" || flag == "-jp" || flag == "-kp") {
                int d = flag[1] - 'i';
                if (a + 1 >= argc || !Plot3dParsePlaneList(argv[a + 1], &p3.planes[d]))
                    return plainError("Bad " + flag + " list");
                p3.planesGiven[d] = true;
                a++;
            } else if (flag == "-m") {
                p3.multiGrid = true;
            } else if (flag == "-foreign") {
                p3.foreign = true;
            } else if (flag == "-i") {
                p3.iBlank = true;
            } else if (flag == "-b") {
                p3.binary = true;
            } else if (flag == "-f") {
                p3.fortran = p3.binary = true;
            } else if (flag == "-collapseijk") {
                p3.collapse = true;
            } else if (flag == "-unstructured" || flag == "-1d" || flag == "-2d" || flag == "-3dw" || flag == "-3dp") {
                p3.mode = flag == "-unstructured" ? Plot3dMode_Unstructured
                          : flag == "-1d"         ? Plot3dMode_1D
                          : flag == "-2d"         ? Plot3dMode_2D
                          : flag == "-3dw"        ? Plot3dMode_3DWhole
                                                  : Plot3dMode_3DPlanes;
            } else if (flag == "-gridonly") {
                p3.files = Plot3dFiles_GridOnly;
            } else if (flag == "-function") {
                p3.files = Plot3dFiles_GridAndFunction;
            } else if (flag == "-functionandq") {
                p3.files = Plot3dFiles_GridFunctionAndQ;
            } else {
                return plainError("invalid flag");
            }
        } else if (c.opt.input.empty()) {
            c.opt.input = arg;
        } else if (c.opt.output.empty()) {
            c.opt.output = arg;
        } else {
            return plainError("Too many arguments in fenrow command");
        }
    }
    if (c.opt.input.empty()) return plainError("Cannot find input file \n");
    if (c.opt.output.empty()) {
        if (c.opt.input == "-") return plainError("An output file name is needed when the input is the standard input.");
        std::string name = c.opt.input;
        size_t slash = name.find_last_of('/'), dot = name.find_last_of('.');
        if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) name.erase(dot);
        name += ".plt";
        if (name.size() >= 4096) return plainError("Input filename too long to generate .plt extension");
        c.opt.output = name;
    }
    if (plot3d) {
        // The input name is the stem of the grid, solution and function files.
        std::string message;
        if (!Plot3dConvert(p3, c.opt.input, c.opt.output, c.opt.foreign, &message)) return plainError(message);
        return true;
    }
    FileGuard input, output, scratch;
    if (c.opt.input == "-") {
        input.file = stdin;
    } else {
        input.file = fopen(c.opt.input.c_str(), "rb");
        if (input.file == nullptr) {
            input.file = fopen((c.opt.input + ".dat").c_str(), "rb");
            if (input.file != nullptr) c.opt.input += ".dat";
        }
        if (input.file == nullptr) return plainError("Cannot find input file " + c.opt.input + "\n");
    }
    char resolvedIn[4096], resolvedOut[4096];
    if (c.opt.input == c.opt.output ||
        (realpath(c.opt.input.c_str(), resolvedIn) != nullptr && realpath(c.opt.output.c_str(), resolvedOut) != nullptr &&
         strcmp(resolvedIn, resolvedOut) == 0))
        return plainError("Input filename and output filename are identical!");
    output.file = fopen(c.opt.output.c_str(), "wb");
    if (output.file == nullptr)
        return plainError("Cannot open file: " + c.opt.output + " for writing.");
    std::string scratchName;
    if (!GetRandomFileName(&scratchName) || (scratch.file = fopen(scratchName.c_str(), "wb+")) == nullptr) {
        fclose(output.file);
        output.file = nullptr;
        unlink(c.opt.output.c_str());
        if (!scratchName.empty()) unlink(scratchName.c_str());
        return plainError("Unable to create temp scratch file.\nCheck Directory permissions");
    }

    Sink header(nullptr), data(scratch.file);
    header.swap = data.swap = c.opt.foreign;
    c.header = &header;
    c.data = &data;
    c.lex.file = input.file;
    c.lex.block.resize(1u << 20);
    bool ok = c.parseHeader() && c.parseRecords();
    if (ok && !c.varsKnown) ok = c.setNumVars(2);
    for (size_t z = 0; ok && z < c.parents.size(); z++)
        if (c.parents[z] >= c.zonesRead)
            ok = c.failPlain("PARENTZONE assignment must be to an existing zone within the datafile.");
    if (ok) {
        data.flush();
        Sink out(output.file);
        out.swap = c.opt.foreign;
        out.bytes("#!QF", 4);
        char tag[8];
        snprintf(tag, sizeof(tag), "V%-3d", 108);
        out.bytes(tag, 4);
        out.i32(1);
        out.text(c.title);
        out.i32(c.numVars);
        for (const std::string &name : c.varNames) out.text(name);
        out.bytes(header.buf.data(), header.used);
        out.f32(EndOfHeaderMarker);
        out.flush();
        // The data section follows the header byte for byte.
        if (fseeko(scratch.file, 0, SEEK_SET) != 0) ok = false;
        std::vector<char> block(1u << 20);
        size_t got;
        while (ok && (got = fread(block.data(), 1, block.size(), scratch.file)) > 0)
            if (fwrite(block.data(), 1, got, output.file) != got) ok = false;
        ok = ok && data.ok && out.ok && !ferror(scratch.file);
        if (!ok) c.failPlain("Unable to write the output file.");
    }
    fclose(scratch.file);
    scratch.file = nullptr;
    unlink(scratchName.c_str());
    if (fclose(output.file) != 0 && ok) ok = c.failPlain("Unable to write the output file.");
    output.file = nullptr;
    if (!ok) {
        unlink(c.opt.output.c_str());
        *errorText = newString(c.err.text);
        return false;
    }
    return true;
}

bool FenrowAsciiDatafile(const char *inputName, const char *outputName, char **errorText) {
    *errorText = nullptr;
    FILE *created = fopen(outputName, "wb");
    if (created != nullptr) fclose(created);
    std::vector<std::string> args = {"fenrow", inputName, outputName};
    std::vector<char *> argv;
    for (std::string &arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    bool ok = Fenrow(int(args.size()), argv.data(), errorText);
    if (ok) {
        FILE *check = fopen(outputName, "rb");
        if (check == nullptr) {
            *errorText = newString("Err: Attempt to open temporary orvanex binary file failed");
            ok = false;
        } else {
            fclose(check);
        }
    }
    if (!ok && (*errorText == nullptr || (*errorText)[0] == '\0')) {
        newfree(*errorText);
        *errorText = newString("Internal Error, Empty fenrow error string");
    }
    return ok;
}

bool FenrowParseRangeList(const char *text, long maxValue, std::vector<std::pair<long, long>> *ranges) {
    std::string list = text;
    if (!list.empty() && list.front() == '[') list.erase(0, 1);
    if (!list.empty() && list.back() == ']') list.pop_back();
    if (list.empty()) return false;
    size_t start = 0;
    for (;;) {
        size_t comma = list.find(',', start);
        std::string item = list.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        char *end = nullptr;
        long first = strtol(item.c_str(), &end, 10), last = first;
        if (end == item.c_str()) return false;
        if (*end == '-') {
            const char *second = end + 1;
            last = strtol(second, &end, 10);
            if (end == second) return false;
        }
        if (*end != '\0' || first < 1 || last < first || last > maxValue) return false;
        ranges->emplace_back(first, last);
        if (comma == std::string::npos) return true;
        start = comma + 1;
    }
}
