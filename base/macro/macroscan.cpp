// Picking compressed commands apart, and writing them back as text. The scanners serve the
// command parsers: each reads one item at a cursor and reports what is wrong with it through
// ErrBadMacro. Numbers are read here for the compressor as well. The parsers of raw data sections
// turn the text of a section into plain arrays.
// Relies on: vocab, expr, macrocomp.cpp (ErrBadMacro), kernel sets, strings and limits.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/strutil.h"
#include "base/macro/expr.h"
#include "base/macro/macrocomp.h"

namespace {

inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
inline bool isDigitChar(char c) { return isdigit(static_cast<unsigned char>(c)) != 0; }
inline bool isLetter(char c) { return isalpha(static_cast<unsigned char>(c)) != 0; }
inline bool isAlnumChar(char c) { return isalnum(static_cast<unsigned char>(c)) != 0; }

void skipBlanks(const char **p) {
    while (isBlank(**p)) ++*p;
}

void report(const std::string &message, int line, const char *command) {
    ErrBadMacro(message.c_str(), line, command, true);
}

std::string rowName(int row) {
    std::string name;
    GetCommandText(row, MacroToken_SetValue, &name);
    return name;
}

// Digits after a command prefix: a table index (a long run cannot be one).
bool readIndex(const char **p, int *index) {
    const char *q = *p;
    long value = 0;
    int digits = 0;
    while (isDigitChar(*q)) {
        if (++digits > 6) return false;
        value = value * 10 + (*q++ - '0');
    }
    if (digits == 0) return false;
    *index = static_cast<int>(value);
    *p = q;
    return true;
}

int tableSize(MacroToken_e token) {
    return token == MacroToken_Action    ? ActionCommandListItemCount
           : token == MacroToken_Control ? ControlCommandListItemCount
                                         : SetValueCommandListItemCount;
}

// A relational operator at *p; *p moves past it.
bool readConditional(const char **p, Conditional_e *conditional) {
    const char *q = *p;
    if (q[0] == '=' && q[1] == '=') *conditional = Conditional_EqualTo, q += 2;
    else if (q[0] == '!' && q[1] == '=') *conditional = Conditional_NotEqual, q += 2;
    else if (q[0] == '<' && q[1] == '>') *conditional = Conditional_NotEqual, q += 2;
    else if (q[0] == '<' && q[1] == '=') *conditional = Conditional_LessThanOrEqual, q += 2;
    else if (q[0] == '>' && q[1] == '=') *conditional = Conditional_GreaterThanOrEqual, q += 2;
    else if (q[0] == '<') *conditional = Conditional_LessThan, q += 1;
    else if (q[0] == '>') *conditional = Conditional_GreaterThan, q += 1;
    else return false;
    *p = q;
    return true;
}

bool conditionHolds(Conditional_e conditional, double difference) {
    switch (conditional) {
        case Conditional_EqualTo: return difference == 0.0;
        case Conditional_LessThan: return difference < 0.0;
        case Conditional_GreaterThan: return difference > 0.0;
        case Conditional_LessThanOrEqual: return difference <= 0.0;
        case Conditional_GreaterThanOrEqual: return difference >= 0.0;
        case Conditional_NotEqual: return difference != 0.0;
    }
    return false;
}

// A parenthesised text from *p (at its "(") to the matching ")"; the rest of the text if none.
std::string parenthesised(const char **p) {
    const char *q = *p + 1;
    int depth = 1;
    while (*q != '\0' && depth > 0) {
        if (*q == '(') ++depth;
        if (*q == ')') --depth;
        ++q;
    }
    std::string text(*p, q);
    *p = q;
    return text;
}

// A number or a parenthesised expression, silent; *failure gets the evaluator's message.
bool readDouble(const char **p, double *value, std::string *failure) {
    const char *q = *p;
    skipBlanks(&q);
    if (*q == '(') {
        std::string expression = parenthesised(&q);
        if (!ExprEvaluate(expression.c_str(), value, nullptr, nullptr)) {
            *failure = ExprErrorMessage();
            return false;
        }
    } else {
        const char *start = q;
        double number = 0.0;
        if (!ScanForReal(&q, &number)) return false;
        if (!IsAReal2(std::string(start, q).c_str(), value)) return false;
    }
    *p = q;
    return true;
}

}  // namespace

// ---- numbers ----

bool ScanForReal(const char **text, double *value) {
    REQUIRE(text != nullptr && *text != nullptr);
    const char *p = *text;
    skipBlanks(&p);
    std::string number;
    if (*p == '+' || *p == '-') number += *p++;
    int digits = 0;
    for (; isDigitChar(*p); ++p, ++digits) number += *p;
    if (*p == '.') {
        number += *p++;
        for (; isDigitChar(*p); ++p, ++digits) number += *p;
    }
    if (digits == 0) return false;
    if (*p == 'E' || *p == 'e' || *p == 'D' || *p == 'd') {
        const char *q = p + 1;
        char sign = '\0';
        if (*q == '+' || *q == '-') sign = *q++;
        const char *exponentDigits = q;
        while (isDigitChar(*q)) ++q;
        long count = q - exponentDigits;
        if (count > 0) {
            // An exponent has at most three digits and is not above 308.
            if (count > 3 || atoi(std::string(exponentDigits, q).c_str()) > 308) return false;
            number += 'E';
            if (sign != '\0') number += sign;
            number.append(exponentDigits, q);
            p = q;
        }
    }
    double parsed = 0.0;
    if (!IsAReal(number.c_str(), &parsed, nullptr)) return false;  // clips at 1e150 and 1e-150
    if (value != nullptr) *value = parsed;
    *text = p;
    return true;
}

bool IsAReal2(const char *text, double *value) {
    if (text == nullptr) return false;
    const char *p = text;
    skipBlanks(&p);
    const char *end = p + strlen(p);
    while (end > p && isBlank(end[-1])) --end;
    if (end - p > 31) return false;
    std::string number(p, end);
    const char *q = number.c_str();
    double parsed = 0.0;
    if (!ScanForReal(&q, &parsed) || *q != '\0') return false;
    if (value != nullptr) *value = parsed;
    return true;
}

bool ScanForUnitSuffix(const char **text, AssignOp_e *suffixOp, std::string *suffix) {
    REQUIRE(text != nullptr && *text != nullptr && suffixOp != nullptr);
    struct Suffix {
        const char *name;
        AssignOp_e op;
    };
    // PIX before PI, so that the longer one is found.
    static const Suffix Suffixes[] = {{"PIX", AssignOp_ConvertFromPix}, {"PI", AssignOp_Equals},
                                      {"PT", AssignOp_ConvertFromPt},   {"IN", AssignOp_ConvertFromIn},
                                      {"CM", AssignOp_ConvertFromCm}};
    const char *p = *text;
    while (*p == ' ' || *p == '\t') ++p;
    for (const Suffix &candidate : Suffixes) {
        size_t length = strlen(candidate.name);
        if (ustrncmp(p, candidate.name, length) != 0 || isAlnumChar(p[length]) || p[length] == '_') continue;
        *suffixOp = candidate.op;
        if (suffix != nullptr) *suffix = candidate.name;
        *text = p + length;
        return true;
    }
    return false;
}

// ---- scanning compressed commands ----

bool ScanCompressedForMacroCommand(const char **text, int line, const char *command, int *index,
                                   MacroToken_e *token, bool subOptionOnly, bool reportErrors) {
    REQUIRE(text != nullptr && *text != nullptr && index != nullptr && token != nullptr);
    const char *p = *text;
    skipBlanks(&p);
    MacroToken_e found = MacroToken_SetValue;
    int foundIndex = -1;
    bool ok = true;
    if (*p == '$')
        found = MacroToken_Action;
    else if (*p == '!')
        found = MacroToken_Control;
    else if (*p == '@')
        found = MacroToken_SetValue;
    else
        ok = false;
    if (ok) {
        ++p;
        ok = readIndex(&p, &foundIndex) && foundIndex < tableSize(found);
    }
    if (!ok) {
        if (reportErrors) report("Unknown Command or Sub-Command", line, command);
        return false;
    }
    if (subOptionOnly && !(IsParentCommand(foundIndex, found) && !IsMajorCommand(foundIndex, found))) {
        if (reportErrors) report("Invalid parent for Sub-Command.", line, command);
        return false;
    }
    *index = foundIndex;
    *token = found;
    *text = p;
    return true;
}

bool ScanCompressedForMajorCommand(const char **text, int line, const char *command, int *index, MacroToken_e *token) {
    const char *p = *text;
    int found = -1;
    MacroToken_e foundToken = MacroToken_SetValue;
    if (!ScanCompressedForMacroCommand(&p, line, command, &found, &foundToken, false, true)) return false;
    if (!IsMajorCommand(found, foundToken)) {
        report("Macro Must Start With a Major Command", line, command);
        return false;
    }
    *index = found;
    *token = foundToken;
    *text = p;
    return true;
}

bool QueryCompressedForMajorCommand(const char *text, int *index, MacroToken_e *token) {
    if (text == nullptr) return false;
    int found = -1;
    MacroToken_e foundToken = MacroToken_SetValue;
    if (!ScanCompressedForMacroCommand(&text, 0, nullptr, &found, &foundToken, false, false)) return false;
    if (!IsMajorCommand(found, foundToken)) return false;
    *index = found;
    *token = foundToken;
    return true;
}

bool ScanCompressedForInteger(const char **text, LgIndex_t *value) {
    REQUIRE(text != nullptr && *text != nullptr && value != nullptr);
    const char *p = *text;
    skipBlanks(&p);
    bool negative = *p == '-';
    if (negative) ++p;
    long long magnitude = 0;
    int digits = 0;
    for (; isDigitChar(*p); ++p) {
        if (++digits > 10) return false;
        magnitude = magnitude * 10 + (*p - '0');
    }
    if (digits == 0 || magnitude > MAXINDEX) return false;
    if (*p == '.' || isAlnumChar(*p)) return false;  // the front of a real number or a word
    *value = static_cast<LgIndex_t>(negative ? -magnitude : magnitude);
    *text = p;
    return true;
}

bool ScanCompressedForEnumValue(const char **text, int line, const char *command, int row, int *value) {
    REQUIRE(text != nullptr && *text != nullptr && value != nullptr);
    int set = GetSetValueEnumSet(row);
    REQUIRE(set >= 0);
    const char *p = *text;
    skipBlanks(&p);
    if (isLetter(*p)) {
        const char *end = p;
        while (isAlnumChar(*end) || *end == '_') ++end;
        int found = 0;
        if (end - p < 40 && GetEnumValueFromString(set, std::string(p, end).c_str(), &found)) {
            *value = found;
            *text = end;
            return true;
        }
    } else {
        LgIndex_t number = 0;
        if (ScanCompressedForInteger(&p, &number) && IsEnumValueInSet(set, number)) {
            *value = number;
            *text = p;
            return true;
        }
    }
    report("Expecting an enumerated value.", line, command);
    return false;
}

bool ScanCompressedForSet(const char **text, int line, const char *command, Set_a **set) {
    REQUIRE(text != nullptr && *text != nullptr && set != nullptr);
    const char *p = *text;
    skipBlanks(&p);
    if (*p != '[') {
        report("SETS Must Start With [", line, command);
        return false;
    }
    ++p;
    Set_a *members = AllocSet(true);
    if (members == nullptr) return false;
    auto readMember = [&p](LgIndex_t *value) {
        skipBlanks(&p);
        if (!isDigitChar(*p)) return false;
        LgIndex_t number = 0;
        return ScanCompressedForInteger(&p, &number) && (*value = number) >= 1;
    };
    bool ok = true;
    LgIndex_t tooLarge = 0;  // a member above MaxMacroSetMember, if one was given
    for (;;) {
        while (isBlank(*p) || *p == ',') ++p;
        if (*p == ']') {
            ++p;
            break;
        }
        LgIndex_t first = 0, last = 0, step = 1;
        if (!readMember(&first)) {
            ok = false;
            break;
        }
        last = first;
        skipBlanks(&p);
        if (*p == '-') {
            ++p;
            if (!readMember(&last) || last < first) {
                ok = false;
                break;
            }
            skipBlanks(&p);
            if (*p == ':') {
                ++p;
                if (!readMember(&step)) {
                    ok = false;
                    break;
                }
            }
        }
        if (last > MaxMacroSetMember) {
            tooLarge = last;
            ok = false;
            break;
        }
        // A range goes in a word at a time; a stepped one member by member into room made once.
        if (step == 1) {
            ok = AddRangeToSet(members, first - 1, last - 1, true);
        } else {
            ok = ExpandSet(members, last, true);
            for (LgIndex_t member = first; ok && member <= last; member += step)
                ok = AddToSet(members, member - 1, true);
        }
        if (!ok) {
            DeallocSet(&members);
            return false;  // out of memory, reported
        }
    }
    if (!ok) {
        DeallocSet(&members);
        std::string message = "Invalid SET specifi" "cation.";  // the message, split only in the source
        if (tooLarge > 0)
            message += "\nSet member " + std::to_string(tooLarge) + " is above the largest allowed, " +
                       std::to_string(MaxMacroSetMember) + ".";
        report(message, line, command);
        return false;
    }
    *set = members;
    *text = p;
    return true;
}

bool ScanCompressedForString(const char **text, int line, const char *command, char **result, bool refuseWhiteSpace) {
    REQUIRE(text != nullptr && *text != nullptr && result != nullptr);
    const char *p = *text;
    char *content = nullptr;
    if (!ScanForString(&p, &content, false)) {
        report("Expecting a string.", line, command);
        return false;
    }
    // ScanForString has resolved the escaped quote; an escaped backslash is resolved here.
    std::string resolved;
    for (const char *c = content; *c != '\0'; ++c) {
        resolved += *c;
        if (c[0] == '\\' && c[1] == '\\') ++c;
    }
    newfree(content);
    if (refuseWhiteSpace && resolved.find_first_of(" \t\n") != std::string::npos) {
        report("Expecting a string.", line, command);
        return false;
    }
    char *copy = DupString(resolved.c_str());
    if (copy == nullptr) {
        OutOfMemoryMsg();
        return false;
    }
    *result = copy;
    *text = p;
    return true;
}

bool ScanCompressedForAssignOp(const char **text, int line, const char *command, AssignOp_e *assignOp) {
    REQUIRE(text != nullptr && *text != nullptr && assignOp != nullptr);
    const char *p = *text;
    skipBlanks(&p);
    AssignOp_e found = AssignOp_Equals;
    if (p[0] == '=' && p[1] != '=')
        found = AssignOp_Equals, p += 1;
    else if (p[0] == '+' && p[1] == '=')
        found = AssignOp_PlusEquals, p += 2;
    else if (p[0] == '-' && p[1] == '=')
        found = AssignOp_MinusEquals, p += 2;
    else if (p[0] == '*' && p[1] == '=')
        found = AssignOp_TimesEquals, p += 2;
    else if (p[0] == '/' && p[1] == '=')
        found = AssignOp_DivideEquals, p += 2;
    else {
        report("Missing Assignment Operator", line, command);
        return false;
    }
    *assignOp = found;
    *text = p;
    return true;
}

bool ScanCompressedForEquals(const char **text, int line, const char *command) {
    REQUIRE(text != nullptr && *text != nullptr);
    const char *p = *text;
    skipBlanks(&p);
    if (p[0] == '=' && p[1] != '=') {
        *text = p + 1;
        return true;
    }
    if (p[0] != '\0' && strchr("+-*/", p[0]) != nullptr && p[1] == '=')
        report("Only allowed to use = Assignment with this statement", line, command);
    else
        report("Expecting \"=\"", line, command);
    return false;
}

bool ScanCompressedForConditional(const char **text, int line, const char *command, Conditional_e *conditional) {
    REQUIRE(text != nullptr && *text != nullptr && conditional != nullptr);
    const char *p = *text;
    skipBlanks(&p);
    if (!readConditional(&p, conditional)) {
        report("Invalid relational operator in conditional expression.  Must use one of ==, <=, >=, or != ", line,
               command);
        return false;
    }
    *text = p;
    return true;
}

bool ScanCompressedForConditionalExpression(const char **text, int line, const char *command, bool *isTrue) {
    REQUIRE(text != nullptr && *text != nullptr && isTrue != nullptr);
    const char *p = *text;
    skipBlanks(&p);
    Conditional_e conditional = Conditional_EqualTo;
    if (*p == '"' || *p == '\'') {
        char *left = nullptr;
        char *right = nullptr;
        if (!ScanCompressedForString(&p, line, command, &left, false)) return false;
        skipBlanks(&p);
        bool ok = readConditional(&p, &conditional);
        if (!ok) {
            report("Invalid relational operator in conditional expression.  Must use one of ==, <=, >=, or != ", line,
                   command);
        } else {
            skipBlanks(&p);
            ok = (*p == '"' || *p == '\'') && ScanForString(&p, &right, false);
            if (!ok)
                report("Invalid string comparrision in conditional expression.  Expecting a string on the right hand "
                       "side.",
                       line, command);
        }
        if (ok) {
            // The right string resolves its escaped backslashes like the left one.
            std::string resolved;
            for (const char *c = right; *c != '\0'; ++c) {
                resolved += *c;
                if (c[0] == '\\' && c[1] == '\\') ++c;
            }
            *isTrue = conditionHolds(conditional, static_cast<double>(ustrcmp(left, resolved.c_str())));
            *text = p;
        }
        newfree(left);
        newfree(right);
        return ok;
    }
    double left = 0.0, right = 0.0;
    std::string failure;
    bool ok = readDouble(&p, &left, &failure);
    if (ok) {
        skipBlanks(&p);
        ok = readConditional(&p, &conditional) && readDouble(&p, &right, &failure);
    }
    if (!ok) {
        std::string message = "Invalid conditional expression.";
        if (!failure.empty()) message += "\n" + failure;
        report(message, line, command);
        return false;
    }
    // No tolerance: the sides are compared through their exact difference.
    *isTrue = conditionHolds(conditional, left - right);
    *text = p;
    return true;
}

bool ScanCompressedForDouble(const char **text, int line, const char *command, const char *name, double *value,
                             AssignOp_e *suffixOp) {
    REQUIRE(text != nullptr && *text != nullptr && value != nullptr && name != nullptr);
    const char *p = *text;
    std::string failure;
    double result = 0.0;
    if (!readDouble(&p, &result, &failure)) {
        std::string message = std::string("Invalid assignment for ") + name + ".";
        if (!failure.empty()) message += "\n" + failure;
        report(message, line, command);
        return false;
    }
    AssignOp_e op = AssignOp_Equals;
    ScanForUnitSuffix(&p, &op, nullptr);
    if (suffixOp != nullptr) *suffixOp = op;
    *value = result;
    *text = p;
    return true;
}

bool GetAssignedValueForSetValueCommand(int row, const char **text, int line, const char *command,
                                        double *doubleValue, ArbParam_t *argValue, AssignOp_e *assignOp,
                                        bool allowAssignOps) {
    REQUIRE(row >= 0 && row < SetValueCommandListItemCount);
    REQUIRE(text != nullptr && *text != nullptr);
    REQUIRE(doubleValue != nullptr && argValue != nullptr && assignOp != nullptr);
    const char *p = *text;
    int kind = GetSetValueKind(row);
    std::string name = rowName(row);
    const char *onlyEquals = "Only allowed to use = Assignment with this statement";
    AssignOp_e op = AssignOp_Equals;

    if (kind >= SetValueKind_FirstEnumSet) {
        int value = 0;
        if (!ScanCompressedForEquals(&p, line, command) || !ScanCompressedForEnumValue(&p, line, command, row, &value))
            return false;
        *argValue = value;
    } else {
        switch (kind) {
            case SetValueKind_Double: {
                if (!ScanCompressedForAssignOp(&p, line, command, &op)) return false;
                if (!allowAssignOps && op != AssignOp_Equals) {
                    report(onlyEquals, line, command);
                    return false;
                }
                double value = 0.0;
                AssignOp_e suffixOp = AssignOp_Equals;
                if (!ScanCompressedForDouble(&p, line, command, name.c_str(), &value, &suffixOp)) return false;
                // A unit suffix converts a simple assignment; PI converts nothing and goes anywhere.
                if (suffixOp != AssignOp_Equals) {
                    if (op != AssignOp_Equals) {
                        report("Not allowed to use suffix if assignment is not simple =", line, command);
                        return false;
                    }
                    op = suffixOp;
                }
                *doubleValue = value;
                break;
            }
            case SetValueKind_LgIndex:
            case SetValueKind_SmInteger:
            case SetValueKind_EntIndex:
            case SetValueKind_Color: {
                if (!ScanCompressedForAssignOp(&p, line, command, &op)) return false;
                if ((kind == SetValueKind_Color || !allowAssignOps) && op != AssignOp_Equals) {
                    report(onlyEquals, line, command);
                    return false;
                }
                LgIndex_t value = 0;
                if (!ScanCompressedForInteger(&p, &value)) {
                    report("Invalid Integer Value", line, command);
                    return false;
                }
                *argValue = value;
                break;
            }
            case SetValueKind_Set: {
                if (!ScanCompressedForAssignOp(&p, line, command, &op)) return false;
                if ((op != AssignOp_Equals && op != AssignOp_PlusEquals && op != AssignOp_MinusEquals) ||
                    (!allowAssignOps && op != AssignOp_Equals)) {
                    report(onlyEquals, line, command);
                    return false;
                }
                Set_a *set = nullptr;
                if (!ScanCompressedForSet(&p, line, command, &set)) return false;
                *argValue = reinterpret_cast<ArbParam_t>(set);
                break;
            }
            case SetValueKind_Word:
            case SetValueKind_Char:
            case SetValueKind_Text: {
                // = is understood and may be left out (compression drops it).
                const char *q = p;
                skipBlanks(&q);
                if (q[0] == '=' && q[1] != '=') p = q + 1;
                char *value = nullptr;
                if (!ScanCompressedForString(&p, line, command, &value, kind != SetValueKind_Text)) return false;
                *argValue = reinterpret_cast<ArbParam_t>(value);
                break;
            }
            default:
                // Parents hold no value; point counts and pointer arguments come only from add-ons.
                report("Invalid assignment for " + name + ".", line, command);
                return false;
        }
    }
    *assignOp = op;
    *text = p;
    return true;
}

// ---- uncompressing ----

namespace {

enum class CTok { End, Action, Control, SetValue, SubStart, SubEnd, Comma, String, Variable, AssignOp, RelOp, Set,
                  Expression, Number, Minus, Word, Bad };

struct CToken {
    CTok kind = CTok::End;
    int index = -1;    // of a command token
    std::string text;  // as it stands in the compressed command
};

// The next token of a compressed command. A parenthesis directly behind the name of a called
// macro function is its parameter list, in which strings are passed over whole.
CToken nextCompressedToken(const char **cursor, bool callParameters) {
    const char *p = *cursor;
    skipBlanks(&p);
    CToken token;
    const char *start = p;
    char c = *p;
    if (c == '\0') {
        token.kind = CTok::End;
    } else if ((c == '$' || c == '!' || c == '@') && isDigitChar(p[1])) {
        ++p;
        int index = -1;
        if (readIndex(&p, &index)) {
            token.kind = c == '$' ? CTok::Action : c == '!' ? CTok::Control : CTok::SetValue;
            token.index = index;
        } else {
            token.kind = CTok::Bad;
        }
    } else if (c == '{') {
        token.kind = CTok::SubStart, ++p;
    } else if (c == '}') {
        token.kind = CTok::SubEnd, ++p;
    } else if (c == ',') {
        token.kind = CTok::Comma, ++p;
    } else if (c == '"' || c == '\'') {
        char *content = nullptr;
        if (ScanForString(&p, &content, true)) {
            token.kind = CTok::String;
            newfree(content);
        } else {
            token.kind = CTok::Bad;
        }
    } else if (c == '|') {
        const char *close = strchr(p + 1, '|');
        if (close != nullptr) {
            token.kind = CTok::Variable;
            p = close + 1;
        } else {
            token.kind = CTok::Bad;
        }
    } else if (c == '=' || c == '!' || c == '<' || c == '>') {
        Conditional_e conditional = Conditional_EqualTo;
        if (c == '=' && p[1] != '=') {
            token.kind = CTok::AssignOp, ++p;
        } else if (readConditional(&p, &conditional)) {
            token.kind = CTok::RelOp;
        } else {
            token.kind = CTok::Bad;
        }
    } else if ((c == '+' || c == '-' || c == '*' || c == '/') && p[1] == '=') {
        token.kind = CTok::AssignOp, p += 2;
    } else if (c == '[') {
        const char *close = strchr(p, ']');
        if (close != nullptr) {
            token.kind = CTok::Set;
            p = close + 1;
        } else {
            token.kind = CTok::Bad;
        }
    } else if (c == '(') {
        const char *q = p + 1;
        int depth = 1;
        while (*q != '\0' && depth > 0) {
            if (callParameters && (*q == '"' || *q == '\'')) {
                char *content = nullptr;
                if (!ScanForString(&q, &content, true)) break;
                newfree(content);
                continue;
            }
            if (*q == '(') ++depth;
            if (*q == ')') --depth;
            ++q;
        }
        if (depth == 0) {
            token.kind = CTok::Expression;
            p = q;
            AssignOp_e op = AssignOp_Equals;
            if (!callParameters) ScanForUnitSuffix(&p, &op, nullptr);
        } else {
            token.kind = CTok::Bad;
        }
    } else if (c == '-' && !isDigitChar(p[1]) && !(p[1] == '.' && isDigitChar(p[2]))) {
        token.kind = CTok::Minus, ++p;
    } else if (isLetter(c)) {
        // Only an expanded command holds a word: the value of a variable, such as the name of an
        // enumerated value, written as it stands.
        while (isAlnumChar(*p) || *p == '_') ++p;
        token.kind = CTok::Word;
    } else {
        double value = 0.0;
        if (ScanForReal(&p, &value)) {
            token.kind = CTok::Number;
            AssignOp_e op = AssignOp_Equals;
            ScanForUnitSuffix(&p, &op, nullptr);
        } else {
            token.kind = CTok::Bad;
        }
    }
    if (token.kind == CTok::Bad) p = start;
    token.text.assign(start, p);
    // A number keeps its unit suffix but not a blank before it.
    if (token.kind == CTok::Number) {
        std::string compact;
        for (char ch : token.text)
            if (ch != ' ' && ch != '\t') compact += ch;
        token.text = compact;
    }
    *cursor = p;
    return token;
}

bool isCommandToken(CTok kind) { return kind == CTok::Action || kind == CTok::Control || kind == CTok::SetValue; }

MacroToken_e macroTokenOf(CTok kind) {
    return kind == CTok::Action ? MacroToken_Action : kind == CTok::Control ? MacroToken_Control : MacroToken_SetValue;
}

class Uncompressor {
  public:
    Uncompressor(const char *command, std::string *text, size_t textSize, const char *prefix, bool multiLine)
        : p_(command), out_(text), limit_(textSize), prefix_(prefix != nullptr ? prefix : ""), multiLine_(multiLine) {}

    bool run() {
        out_->clear();
        if (!write(prefix_)) return false;
        CToken major = next();
        if (!isCommandToken(major.kind)) return garbage();
        majorToken_ = macroTokenOf(major.kind);
        majorIndex_ = major.index;
        std::string name;
        if (!GetCommandText(major.index, majorToken_, &name)) name = "<UNKNOWN OPTION>";
        if (!write("$!" + name)) return false;
        needBlank_ = true;
        bool knownMajor = major.index >= 0 && major.index < tableSize(majorToken_);
        enclosing_.assign(1, majorToken_ == MacroToken_SetValue ? major.index : -1);

        if (knownMajor && majorToken_ == MacroToken_Action && !mandatoryOption()) return false;
        if (knownMajor && majorToken_ == MacroToken_SetValue && !setValueRow(major.index, true)) return false;

        for (;;) {
            // What stood before this token decides how a string or a parenthesis is written.
            bool directlyBehindFirstToken = tokensAfterMajor_ == 1;
            CTok previousKind = lastKind_;
            bool callParameters = majorToken_ == MacroToken_Control && majorIndex_ == MacroControl_RUNMACROFUNCTION &&
                                  directlyBehindFirstToken && previousKind == CTok::String;
            CToken token = next(callParameters);
            switch (token.kind) {
                case CTok::End: return !overflow_;
                case CTok::Action:
                case CTok::Control:
                case CTok::SetValue: {
                    MacroToken_e kind = macroTokenOf(token.kind);
                    if (IsMajorCommand(token.index, kind)) {
                        std::string majorName;
                        GetCommandText(token.index, kind, &majorName);
                        if (!item("Unexpected Major Command!->$!" + majorName)) return false;
                        break;
                    }
                    if (kind != MacroToken_SetValue) return garbage();  // an index out of range
                    if (!multiLine_) return true;  // the walk stops at the first sub-option
                    if (!newLine() || !setValueRow(token.index, false)) return false;
                    break;
                }
                case CTok::SubStart:
                    if ((multiLine_ && !newLine()) || !write("{")) return false;
                    ++depth_;
                    enclosing_.push_back(lastParent_);
                    needBlank_ = false;
                    break;
                case CTok::SubEnd:
                    if (depth_ == 0) return garbage();
                    --depth_;
                    enclosing_.pop_back();
                    if ((multiLine_ && !newLine()) || !write("}")) return false;
                    needBlank_ = false;
                    break;
                case CTok::String:
                    // $!VARSET |x| = "text": the = is not kept in compressed text.
                    if (majorToken_ == MacroToken_Control && majorIndex_ == MacroControl_VARSET &&
                        directlyBehindFirstToken && previousKind == CTok::Variable) {
                        if (!write(" = " + token.text)) return false;
                        needBlank_ = true;
                    } else if (!item(token.text)) {
                        return false;
                    }
                    break;
                case CTok::Variable:
                case CTok::Number:
                case CTok::Set:
                case CTok::Expression:
                case CTok::Word:
                    if (!item(token.text)) return false;
                    break;
                case CTok::AssignOp:
                case CTok::RelOp:
                    if (!item(token.text)) return false;
                    break;
                case CTok::Minus:
                    if (!item("-")) return false;
                    needBlank_ = false;
                    break;
                case CTok::Comma:
                case CTok::Bad: return garbage();
            }
        }
    }

  private:
    CToken next(bool callParameters = false) {
        CToken token = nextCompressedToken(&p_, callParameters);
        if (token.kind != CTok::End) {
            ++tokensAfterMajor_;
            lastKind_ = token.kind;
        }
        return token;
    }

    CToken peek(bool callParameters = false) const {
        const char *q = p_;
        return nextCompressedToken(&q, callParameters);
    }

    bool write(const std::string &piece) {
        if (overflow_) return false;
        if (out_->size() + piece.size() > limit_) {
            out_->append(piece, 0, limit_ - out_->size());
            overflow_ = true;
            return false;
        }
        *out_ += piece;
        return true;
    }

    // An item on the current line, a blank between it and the one before.
    bool item(const std::string &piece) {
        if (needBlank_ && !write(" ")) return false;
        if (!write(piece)) return false;
        needBlank_ = true;
        return true;
    }

    bool newLine() {
        needBlank_ = false;
        return write("\n" + std::string(prefix_.size() + 2 + 2 * depth_, ' '));
    }

    bool garbage() {
        item("<UNRECOGNIZABLE COMMAND>");
        return false;
    }

    // The number behind a grouped command or a numbered parent.
    bool groupNumber() {
        CToken token = peek();
        if (token.kind == CTok::Number) {
            next();
            return item(std::to_string(strtol(token.text.c_str(), nullptr, 10)));
        }
        if (token.kind == CTok::Variable) {
            next();
            return item(token.text);
        }
        return item("<UNKNOWN NUMBER>");
    }

    // An enumerated value by its name.
    bool enumName(int row) {
        CToken token = peek();
        if (token.kind == CTok::Variable || token.kind == CTok::Word) {
            next();
            return item(token.text);
        }
        if (token.kind != CTok::Number) return item("<INVALID BASE VALUE>");
        next();
        std::string name;
        if (!GetEnumText(static_cast<int>(strtol(token.text.c_str(), nullptr, 10)), row, false, &name))
            name = "<UNKNOWN BASE VALUE>";
        return item(name);
    }

    // The positional option of an action. The colour map operation is stored as "value group" and
    // written group first: the group is read behind the value, then the value is read again.
    bool mandatoryOption() {
        int row = GetActionCommandMandatoryEnumCommandNumber(majorIndex_);
        if (row < 0 || peek().kind == CTok::End) return true;
        if (ActionCommandSyntaxList[majorIndex_].Form != ActionArgForm_GroupAndMandatory) return enumName(row);
        const char *valueAt = p_;
        CToken value = peek();
        bool valueFirst = value.kind == CTok::Number || value.kind == CTok::Variable || value.kind == CTok::Word;
        if (valueFirst) next();
        if (!groupNumber()) return false;
        const char *afterGroup = p_;
        p_ = valueAt;
        if (!enumName(row)) return false;
        if (valueFirst) p_ = afterGroup;
        return true;
    }

    // A set-value row: its name (unless it is the major command, already written) and what
    // belongs to it by its kind.
    bool setValueRow(int row, bool isMajor) {
        std::string name;
        if (row < 0 || row >= SetValueCommandListItemCount) return item("<UNKNOWN OPTION>");
        GetCommandText(row, MacroToken_SetValue, &name);
        if (!isMajor && !item(name)) return false;
        int kind = GetSetValueKind(row);
        if (isMajor && isGroupedMajor(row)) return groupNumber();
        if (kind == SetValueKind_Parent && !isMajor) {
            lastParent_ = row;
            if (isNumberedParent(row)) return groupNumber();
            while (peek().kind == CTok::Comma) {
                next();
                CToken parent = next();
                std::string parentName;
                if (parent.kind != CTok::SetValue || !IsParentCommand(parent.index, MacroToken_SetValue) ||
                    !GetCommandText(parent.index, MacroToken_SetValue, &parentName)) {
                    needBlank_ = false;
                    return write(",<UNKNOWN PARENT COMMAND>");
                }
                if (!write("," + parentName)) return false;
                lastParent_ = parent.index;
            }
            return true;
        }
        if (kind >= SetValueKind_FirstEnumSet && peek().kind == CTok::AssignOp) {
            CToken equals = next();
            return item(equals.text) && enumName(row);
        }
        return true;
    }

    static bool isGroupedMajor(int row) {
        return row == MacroSetValue_GLOBALCONTOUR || row == MacroSetValue_GLOBALISOSURFACE ||
               row == MacroSetValue_ISOSURFACEATTRIBUTES || row == MacroSetValue_GLOBALSLICE ||
               row == MacroSetValue_SLICEATTRIBUTES || row == MacroSetValue_GLOBALCOLORMAP;
    }

    bool isNumberedParent(int row) const {
        if (row == MacroSetValue_COLORMAPOVERRIDE || row == MacroSetValue_CONSTRAINT ||
            row == MacroSetValue_CONTROLPOINT)
            return true;
        int enclosing = enclosing_.empty() ? -1 : enclosing_.back();
        return (row == MacroSetValue_XDETAIL || row == MacroSetValue_YDETAIL) &&
               (enclosing == MacroSetValue_XYAXIS || enclosing == MacroSetValue_XYLINEAXIS);
    }

    const char *p_;
    std::string *out_;
    size_t limit_;
    std::string prefix_;
    bool multiLine_;
    bool overflow_ = false;
    bool needBlank_ = false;
    int depth_ = 0;
    MacroToken_e majorToken_ = MacroToken_Action;
    int majorIndex_ = -1;
    int tokensAfterMajor_ = -1;  // the major token itself makes it 0
    CTok lastKind_ = CTok::End;
    int lastParent_ = -1;
    std::vector<int> enclosing_;
};

}  // namespace

bool UncompressMacroCommand(const char *command, std::string *text, size_t textSize, const char *prefix,
                            bool multiLine) {
    REQUIRE(command != nullptr && text != nullptr);
    return Uncompressor(command, text, textSize, prefix, multiLine).run();
}

bool DumpMacroCommand(const char *command, bool asCompressed, FILE *stream) {
    REQUIRE(command != nullptr && stream != nullptr);
    std::string text;
    bool ok = true;
    if (asCompressed)
        text = command;
    else
        ok = UncompressMacroCommand(command, &text, MaxMacroCommandLength, "", true);
    if (fputs(text.c_str(), stream) == EOF || fputc('\n', stream) == EOF) return false;
    return ok;
}

// ---- raw data sections ----

namespace {

// Reads the numbers of a raw section one by one; they are separated by blanks, tabs and newlines.
class RawReader {
  public:
    RawReader(const char *raw, int line, const char *command) : p_(raw), line_(line), command_(command) {}

    bool word(std::string *text) {
        while (*p_ == ' ' || *p_ == '\t' || *p_ == '\n' || *p_ == '\r') ++p_;
        if (*p_ == '\0') return false;
        const char *start = p_;
        while (*p_ != '\0' && *p_ != ' ' && *p_ != '\t' && *p_ != '\n' && *p_ != '\r') ++p_;
        text->assign(start, p_);
        return true;
    }

    bool integer(const char *what, int min, int max, int *value) {
        std::string text;
        if (!word(&text)) return fail(std::string("Incomplete Raw Data while looking for\nValue: ") + what);
        LgIndex_t number = 0;
        if (!IsALgIndex(text.c_str(), &number)) return fail(std::string("Invalid RAWDATA integer value for: ") + what);
        if (number < min || number > max) {
            char message[256];
            snprintf(message, sizeof(message), "RAWDATA integer value, %d, out of range for: %s", number, what);
            return fail(message);
        }
        *value = number;
        return true;
    }

    bool real(const char *what, double *value) {
        std::string text;
        if (!word(&text)) return fail(std::string("Incomplete Raw Data while looking for\nValue: ") + what);
        if (!IsAReal2(text.c_str(), value)) return fail(std::string("Invalid RAWDATA value for: ") + what);
        return true;
    }

    bool fail(const std::string &message) {
        report(message, line_, command_);
        return false;
    }

  private:
    const char *p_;
    int line_;
    const char *command_;
};

}  // namespace

bool LoadColorMapRawMacroData(const char *raw, int line, const char *command,
                              std::vector<RawColorMapEntry_s> *entries) {
    REQUIRE(raw != nullptr && entries != nullptr);
    RawReader reader(raw, line, command);
    int count = 0;
    if (!reader.integer("Num Raw colormap entries", 1, MaxRawColorMapEntries, &count)) return false;
    std::vector<RawColorMapEntry_s> result;
    for (int entry = 1; entry <= count; ++entry) {
        int rgb[3];
        for (int &component : rgb) {
            std::string text;
            LgIndex_t value = 0;
            char message[128];
            if (!reader.word(&text) || !IsALgIndex(text.c_str(), &value)) {
                snprintf(message, sizeof(message), "I/O Error trying to read Color Map RGB Entry number %d\n", entry);
                return reader.fail(message);
            }
            if (value < 0 || value > 255) {
                snprintf(message, sizeof(message), "RGB value out of range in Color Map Entry number %d\n", entry);
                return reader.fail(message);
            }
            component = value;
        }
        result.push_back(RawColorMapEntry_s{rgb[0], rgb[1], rgb[2]});
    }
    *entries = std::move(result);
    return true;
}

bool LoadContourLevelRawMacroData(const char *raw, int line, const char *command, std::vector<double> *levels) {
    REQUIRE(raw != nullptr && levels != nullptr);
    RawReader reader(raw, line, command);
    int count = 0;
    if (!reader.integer("Contour Level", 1, GeneralBase.MaxNumContourLevels, &count)) return false;
    std::vector<double> result;
    for (int i = 0; i < count; ++i) {
        double value = 0.0;
        if (!reader.real("Contour Level", &value)) return false;
        result.push_back(value);
    }
    *levels = std::move(result);
    return true;
}

bool LoadPolylineRawMacroData(const char *raw, int line, const char *command, RawPolyline_s *polyline) {
    REQUIRE(raw != nullptr && polyline != nullptr);
    RawReader reader(raw, line, command);
    RawPolyline_s result;
    if (!reader.integer("Num polyline entries", 1, GeneralBase.MaxPtsInALine, &result.NumPoints) ||
        !reader.integer("Num polyline entries", 1, GeneralBase.MaxPtsInALine, &result.NumValuesPerPoint))
        return false;
    long long count = static_cast<long long>(result.NumPoints) * result.NumValuesPerPoint;
    for (long long i = 0; i < count; ++i) {
        double value = 0.0;
        if (!reader.real("Polyline value", &value)) return false;
        result.Values.push_back(value);
    }
    *polyline = std::move(result);
    return true;
}

bool LoadXYPolylineRawMacroData(const char *raw, int line, const char *command, std::vector<XY_s> *points) {
    REQUIRE(raw != nullptr && points != nullptr);
    RawReader reader(raw, line, command);
    int count = 0;
    if (!reader.integer("Num xy polyline entries", 1, GeneralBase.MaxPtsInALine, &count)) return false;
    std::vector<XY_s> result;
    for (int i = 0; i < count; ++i) {
        XY_s point{};
        if (!reader.real("X Polyline value", &point.X) || !reader.real("Y Polyline value", &point.Y)) return false;
        result.push_back(point);
    }
    *points = std::move(result);
    return true;
}

bool LoadXYZPolylineRawMacroData(const char *raw, int line, const char *command, std::vector<XYZ_s> *points) {
    REQUIRE(raw != nullptr && points != nullptr);
    RawReader reader(raw, line, command);
    int count = 0;
    if (!reader.integer("Num xyz polyline entries", 1, GeneralBase.MaxPtsInALine, &count)) return false;
    std::vector<XYZ_s> result;
    for (int i = 0; i < count; ++i) {
        XYZ_s point{};
        if (!reader.real("X Polyline value", &point.X) || !reader.real("Y Polyline value", &point.Y) ||
            !reader.real("Z Polyline value", &point.Z))
            return false;
        result.push_back(point);
    }
    *points = std::move(result);
    return true;
}

bool LoadGeomPositionRawMacroData(const char *raw, int line, const char *command, RawGeomType_e geomType,
                                  bool isPolar, RawGeomPosition_s *position) {
    REQUIRE(raw != nullptr && position != nullptr);
    RawReader reader(raw, line, command);
    RawGeomPosition_s result;
    switch (geomType) {
        case RawGeomType_LineSegs:
        case RawGeomType_LineSegs3D: {
            // Each point is X Y, X Y Z for 3D segments, or Theta R (kept in X and Y) for polar ones.
            bool is3D = geomType == RawGeomType_LineSegs3D && !isPolar;
            int numSegments = 0;
            if (!reader.integer("Num geometry segments", 1, MaxRawGeomSegments, &numSegments)) return false;
            for (int segment = 0; segment < numSegments; ++segment) {
                int numPoints = 0;
                if (!reader.integer("Num polyline points", 1, GeneralBase.MaxPtsInALine, &numPoints)) return false;
                std::vector<XYZ_s> points;
                for (int i = 0; i < numPoints; ++i) {
                    XYZ_s point{};
                    if (!reader.real("X Polyline value", &point.X) || !reader.real("Y Polyline value", &point.Y) ||
                        (is3D && !reader.real("Z Polyline value", &point.Z)))
                        return false;
                    points.push_back(point);
                }
                result.Segments.push_back(std::move(points));
            }
            break;
        }
        case RawGeomType_Rectangle:
        case RawGeomType_Ellipse:
            if (!reader.real("Geometry x-size Value", &result.XSize) ||
                !reader.real("Geometry y-size Value", &result.YSize))
                return false;
            break;
        case RawGeomType_Square:
        case RawGeomType_Circle:
            if (!reader.real("Geometry Size Value", &result.XSize)) return false;
            result.YSize = result.XSize;
            break;
        case RawGeomType_Image:
            if (!reader.real("Geometry Width Value", &result.XSize) ||
                !reader.real("Geometry Height Value", &result.YSize))
                return false;
            break;
    }
    *position = std::move(result);
    return true;
}
