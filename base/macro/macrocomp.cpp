// Reading macro commands and compressing them; the lists commands are kept in; raw data sections;
// the reporter of macro errors. Compression replaces each command word by its table index and
// each enumerated value by its integer, leaves strings, numbers, sets, expressions and macro
// variables as they stand (variables are expanded only when the command runs), and keeps the
// brace structure of sub-command blocks as bare { and }.
// Relies on: vocab, macroscan.cpp (numbers, uncompressing), kernel errors and strings.
#include "base/macro/macrocomp.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/strutil.h"
#include "base/macro/macrostate.h"

std::vector<MacroCallFrame_s> MacroCallStack;
int MacroCurrentOffset = -1;

namespace {

inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
inline bool isLetter(char c) { return isalpha(static_cast<unsigned char>(c)) != 0; }
inline bool isDigitChar(char c) { return isdigit(static_cast<unsigned char>(c)) != 0; }
inline bool isAlnumChar(char c) { return isalnum(static_cast<unsigned char>(c)) != 0; }
// A character of a macro variable name: letters, digits, _ and the bytes of 192 and up.
inline bool isVarNameChar(char c) {
    return isAlnumChar(c) || c == '_' || static_cast<unsigned char>(c) >= 192;
}

// The major set-value commands that are followed by a group number.
bool isGroupedMajorRow(int row) {
    return row == MacroSetValue_GLOBALCONTOUR || row == MacroSetValue_GLOBALISOSURFACE ||
           row == MacroSetValue_ISOSURFACEATTRIBUTES || row == MacroSetValue_GLOBALSLICE ||
           row == MacroSetValue_SLICEATTRIBUTES || row == MacroSetValue_GLOBALCOLORMAP;
}

// The parent options whose block belongs to a number written behind them: a colour map
// override, a blanking constraint, a colour map control point, and the detail of one X or Y
// axis of a line plot (only directly below XYAXIS or XYLINEAXIS).
bool isNumberedParentRow(int row, int enclosingRow) {
    if (row == MacroSetValue_COLORMAPOVERRIDE || row == MacroSetValue_CONSTRAINT || row == MacroSetValue_CONTROLPOINT)
        return true;
    return (row == MacroSetValue_XDETAIL || row == MacroSetValue_YDETAIL) &&
           (enclosingRow == MacroSetValue_XYAXIS || enclosingRow == MacroSetValue_XYLINEAXIS);
}

// "Expecting One of: " and the names of the set, each on a line of its own behind twelve blanks;
// the message is cut after 349 characters.
std::string expectingOneOf(int set) {
    std::string message = "Expecting One of: ";
    int first = GetEnumSetOffset(set);
    for (int row = first; first >= 0 && row < NumEnumValues && CommandEnumMap[row].Set == set; ++row) {
        message += "\n            ";
        message += CommandEnumMap[row].Name;
    }
    if (message.size() > 349) message.resize(349);
    return message;
}

// Compresses one physical line onto a command. Each token is classified by its first characters,
// checked against the place it stands in (first token major, { only behind a parent option), and
// appended in compressed form.
class Compressor {
  public:
    Compressor(const char *text, std::string *command, int line, MacroCompressState_s *state)
        : text_(text), p_(text), command_(command), line_(line), state_(state) {}

    bool run() {
        for (;;) {
            while (isBlank(*p_)) ++p_;
            if (*p_ == '\0' || *p_ == '#') return true;
            bool afterCallName = state_->AfterCallName;
            state_->AfterCallName = false;
            if (state_->MajorIndex >= 0 && state_->MajorToken == MacroToken_Action && !state_->MandatoryDone) {
                state_->MandatoryDone = true;
                int row = GetActionCommandMandatoryEnumCommandNumber(state_->MajorIndex);
                if (row >= 0) {
                    if (!mandatoryOption(row)) return false;
                    ++state_->TokensAfterMajor;
                    continue;
                }
            }
            if (!token(afterCallName)) return false;
            ++state_->TokensAfterMajor;
            if (endOfLine_) return true;
        }
    }

  private:
    bool token(bool afterCallName) {
        char c = *p_;
        if (c == '[') return set();
        if (c == '(') return expression(afterCallName);
        if (c == '"' || c == '\'') return string();
        if (c == '|') return variableToken();
        if (c == '$' || isLetter(c)) return commandWord();
        if (c == '=') return op(p_[1] == '=' ? "==" : "=");
        if (c == '!') return p_[1] == '=' ? op("!=") : fail("Invalid Value or Identifier");
        if (c == '<') return op(p_[1] == '=' ? "<=" : p_[1] == '>' ? "<>" : "<");
        if (c == '>') return op(p_[1] == '=' ? ">=" : ">");
        if ((c == '+' || c == '-' || c == '*' || c == '/') && p_[1] == '=') return op(std::string{c, '='});
        if (c == '-' && !isDigitChar(p_[1]) && !(p_[1] == '.' && isDigitChar(p_[2]))) return minus();
        if (c == '{') return openBlock();
        if (c == '}') return closeBlock();
        if (c == '.' && isLetter(p_[1])) return separator();
        return number();
    }

    bool fail(const std::string &message) {
        ErrBadMacro(message.c_str(), line_, text_, false);
        return false;
    }

    bool append(const std::string &piece) {
        if (command_->size() + piece.size() > static_cast<size_t>(MaxMacroCommandLength))
            return fail("Macro Command too long");
        *command_ += piece;
        return true;
    }

    // The place a token stands in: the first token of a command must be a major command and no
    // later one may be; behind a parent option only { may stand, and nowhere else.
    bool placeIsRight(bool isMajor, bool isSubStart) {
        if (state_->ExpectMajor) {
            if (!isMajor) return fail("Macro Must Start With a Major Command");
        } else if (isMajor) {
            return fail("Macro Commands Must Start On a New Line");
        }
        if (state_->ExpectSubStart) {
            if (!isSubStart) return fail("Expecting Start of sub-command");
        } else if (isSubStart) {
            return fail("Unexpected sub-command starting brace");
        }
        return true;
    }

    void skipSpacesOnLine(const char **q) {
        while (**q == ' ' || **q == '\t') ++*q;
    }

    // |name| with its modifiers, up to the closing bar; *q moves past it.
    bool scanVariable(const char **q, std::string *reference) {
        const char *name = *q + 1;
        if (*name == '$') ++name;
        const char *end = name;
        while (isVarNameChar(*end)) ++end;
        if (end - name > MaxMacroVarNameLength) return fail("Macro Variable Name Too Long");
        const char *close = strchr(end, '|');
        if (close == nullptr) return fail("Cannot find closing \"|\" for macro variable");
        reference->assign(*q, close + 1);
        *q = close + 1;
        return true;
    }

    // A group number behind a grouped command or a numbered parent: digits, or a macro variable
    // that will hold them; "1" where none stands.
    bool groupNumber(std::string *group) {
        const char *q = p_;
        skipSpacesOnLine(&q);
        // A negative number is kept as given, for the command's range check to name.
        if (isDigitChar(*q) || (*q == '-' && isDigitChar(q[1]))) {
            const char *end = q + 1;
            while (isDigitChar(*end)) ++end;
            if (!isAlnumChar(*end) && *end != '.') {
                group->assign(q, end);
                p_ = end;
                return true;
            }
        } else if (*q == '|') {
            if (!scanVariable(&q, group)) return false;
            p_ = q;
            return true;
        }
        *group = "1";
        return true;
    }

    // An enumerated value in text: a name of the row's set, replaced by its integer, or a macro
    // variable, kept for the run. Anything else (a number too) is refused with the names.
    bool enumValue(int row, std::string *value) {
        int set = GetSetValueEnumSet(row);
        CHECK(set >= 0);
        if (*p_ == '|') return scanVariable(&p_, value);
        if (isLetter(*p_)) {
            const char *end = p_;
            while (isAlnumChar(*end)) ++end;
            std::string word(p_, end);
            int enumValueOfWord = 0;
            if (GetEnumValueFromString(set, word.c_str(), &enumValueOfWord)) {
                *value = std::to_string(enumValueOfWord);
                p_ = end;
                return true;
            }
        }
        return fail(expectingOneOf(set));
    }

    // The positional option of an action, at the first token behind its name. The colour map
    // operation may have a group number in front of it; the group is written behind the value
    // ("value group "), the order in which the action's parser reads them.
    bool mandatoryOption(int row) {
        bool takesGroup = ActionCommandSyntaxList[state_->MajorIndex].Form == ActionArgForm_GroupAndMandatory;
        std::string group;
        if (takesGroup) {
            if (isDigitChar(*p_)) {
                const char *end = p_;
                while (isDigitChar(*end)) ++end;
                if (!isAlnumChar(*end) && *end != '.') {
                    group.assign(p_, end);
                    p_ = end;
                    while (isBlank(*p_)) ++p_;
                }
            } else if (*p_ == '|') {
                // A variable is the group only if the operation follows it.
                const char *q = p_;
                std::string reference;
                if (!scanVariable(&q, &reference)) return false;
                while (isBlank(*q)) ++q;
                if (*q == '|' || isLetter(*q)) {
                    group = reference;
                    p_ = q;
                }
            }
            if (group.empty()) group = "1";
        }
        std::string value;
        if (!enumValue(row, &value)) return false;
        if (!append(" " + value)) return false;
        return !takesGroup || append(" " + group + " ");
    }

    // Further parents behind a parent, each behind a comma.
    bool parentChain() {
        for (;;) {
            const char *q = p_;
            skipSpacesOnLine(&q);
            if (*q != ',') return true;
            ++q;
            skipSpacesOnLine(&q);
            const char *end = q;
            while (isAlnumChar(*end)) ++end;
            std::string word(q, end);
            MacroToken_e token = MacroToken_SetValue;
            int index = -1;
            if (!isLetter(*q) || !IdentifyMacroCommandString(word.c_str(), &token, &index) ||
                token != MacroToken_SetValue || !IsParentCommand(index, token) || IsMajorCommand(index, token))
                return fail("Expecting A Macro Sub-command Parent option");
            if (!append(",@" + std::to_string(index))) return false;
            state_->LastParentRow = index;
            p_ = end;
        }
    }

    // = and the value of an enumerated row, in the same line.
    bool enumAssignment(int row) {
        skipSpacesOnLine(&p_);
        if (*p_ == '=' && p_[1] != '=') {
            ++p_;
        } else if ((*p_ == '+' || *p_ == '-' || *p_ == '*' || *p_ == '/') && p_[1] == '=') {
            return fail("Only allowed to use = Assignment with this statement");
        } else {
            return fail("Expecting = ");
        }
        skipSpacesOnLine(&p_);
        std::string value;
        if (!enumValue(row, &value)) return false;
        return append("=" + value);
    }

    bool commandWord() {
        const char *q = p_;
        bool hasPrefix = false;
        if (*q == '$') {
            if (q[1] != '!') return fail("Major commands expect the '$!' prefix.");
            q += 2;
            hasPrefix = true;
        }
        const char *start = q;
        if (isLetter(*q))
            while (isAlnumChar(*q)) ++q;
        std::string word(start, q);
        MacroToken_e token = MacroToken_SetValue;
        int index = -1;
        if (word.empty() || !IdentifyMacroCommandString(word.c_str(), &token, &index))
            return fail(hasPrefix ? "Unknown major command." : "Invalid macro command option.");
        if (token != MacroToken_SetValue && !hasPrefix)
            return fail(
                "Attempting to use a major command as a sub-option (command is probably missing the '$!' prefix).");
        if (token == MacroToken_SetValue) {
            bool rowIsMajor = IsMajorCommand(index, token);
            if (hasPrefix && !rowIsMajor) return fail("Attempting to use a sub-option as a major command.");
            if (!hasPrefix && rowIsMajor) return fail("Attempting to use a major command as a sub-option.");
        }
        if (!placeIsRight(hasPrefix, false)) return false;
        p_ = q;
        if (hasPrefix) {
            state_->MajorIndex = index;
            state_->MajorToken = token;
            state_->ExpectMajor = false;
            state_->MandatoryDone = false;
            state_->EnclosingRows.assign(1, token == MacroToken_SetValue ? index : -1);
            state_->TokensAfterMajor = -1;  // the caller counts this token
        }
        if (token == MacroToken_SetValue && index == MacroSetValue_RAWDATA) {
            // The section starts on the next line; the rest of this one is not read.
            state_->RawDataSeen = true;
            endOfLine_ = true;
            return true;
        }
        char prefix = token == MacroToken_Action ? '$' : token == MacroToken_Control ? '!' : '@';
        if (!append(prefix + std::to_string(index))) return false;
        if (token != MacroToken_SetValue) return true;

        int kind = GetSetValueKind(index);
        if (isGroupedMajorRow(index)) {
            std::string group;
            return groupNumber(&group) && append(" " + group);
        }
        if (kind == SetValueKind_Parent && !hasPrefix) {
            state_->LastParentRow = index;
            state_->ExpectSubStart = true;
            if (isNumberedParentRow(index, state_->EnclosingRows.empty() ? -1 : state_->EnclosingRows.back())) {
                std::string number;
                return groupNumber(&number) && append(" " + number);
            }
            return parentChain();
        }
        if (kind >= SetValueKind_FirstEnumSet) return enumAssignment(index);
        return true;
    }

    bool openBlock() {
        if (!placeIsRight(false, true) || !append("{")) return false;
        ++p_;
        ++state_->SubCommandDepth;
        state_->EnclosingRows.push_back(state_->LastParentRow);
        state_->ExpectSubStart = false;
        return true;
    }

    bool closeBlock() {
        if (!placeIsRight(false, false)) return false;
        if (state_->SubCommandDepth == 0) return fail("Unexpected sub-command close");
        if (!append("}")) return false;
        ++p_;
        --state_->SubCommandDepth;
        if (!state_->EnclosingRows.empty()) state_->EnclosingRows.pop_back();
        return true;
    }

    bool op(const std::string &symbol) {
        if (!placeIsRight(false, false) || !append(symbol)) return false;
        p_ += symbol.size();
        return true;
    }

    bool minus() {
        if (!placeIsRight(false, false) || !append("-")) return false;
        ++p_;
        return true;
    }

    bool separator() {
        if (!placeIsRight(false, false)) return false;
        ++p_;
        return true;
    }

    // A string stands directly behind its name: an = written between them is dropped (not the
    // = of a relational operator).
    bool string() {
        const char *q = p_;
        char *content = nullptr;
        if (!ScanForString(&q, &content, true)) return fail("Invalid String");
        newfree(content);
        if (q - p_ - 2 > MaxMacroStringLength) return fail("String too long");
        if (!placeIsRight(false, false)) return false;
        size_t length = command_->size();
        if (length >= 1 && (*command_)[length - 1] == '=' &&
            !(length >= 2 && strchr("=!<>", (*command_)[length - 2]) != nullptr))
            command_->pop_back();
        if (!append(std::string(p_, q))) return false;
        p_ = q;
        state_->AfterCallName = state_->MajorToken == MacroToken_Control &&
                                state_->MajorIndex == MacroControl_RUNMACROFUNCTION && state_->TokensAfterMajor == 0;
        return true;
    }

    bool variableToken() {
        const char *q = p_;
        std::string reference;
        if (!scanVariable(&q, &reference) || !placeIsRight(false, false) || !append(reference)) return false;
        p_ = q;
        return true;
    }

    // A number as written, with its unit suffix (upper case, no blank). A blank goes in front of it
    // where it would otherwise run into a letter or digit.
    bool number() {
        const char *q = p_;
        double value = 0.0;
        if (!ScanForReal(&q, &value)) return fail("Invalid Value or Identifier");
        std::string piece(p_, q);
        AssignOp_e suffixOp = AssignOp_Equals;
        std::string suffix;
        if (ScanForUnitSuffix(&q, &suffixOp, &suffix)) piece += suffix;
        if (!placeIsRight(false, false)) return false;
        if (!command_->empty() && isAlnumChar(command_->back()) && (isAlnumChar(piece[0]) || piece[0] == '.'))
            piece.insert(piece.begin(), ' ');
        if (!append(piece)) return false;
        p_ = q;
        return true;
    }

    // ( to the matching ), any text inside. In the parameter list of a call, quoted strings are
    // passed over whole, so that a parenthesis in one does not count.
    bool expression(bool isCallParameters) {
        const char *q = p_ + 1;
        int depth = 1;
        while (*q != '\0' && depth > 0) {
            if (isCallParameters && (*q == '"' || *q == '\'')) {
                char *content = nullptr;
                if (!ScanForString(&q, &content, true)) return fail("Missing ')'");
                newfree(content);
                continue;
            }
            if (*q == '(') ++depth;
            if (*q == ')') --depth;
            ++q;
        }
        if (depth > 0) return fail("Missing ')'");
        std::string piece(p_, q);
        AssignOp_e suffixOp = AssignOp_Equals;
        std::string suffix;
        if (!isCallParameters && ScanForUnitSuffix(&q, &suffixOp, &suffix)) piece += suffix;
        if (!placeIsRight(false, false) || !append(piece)) return false;
        p_ = q;
        return true;
    }

    // One member bound of a set: digits, or a macro variable.
    bool setElement(const char **q, std::string *element) {
        if (**q == '|') return scanVariable(q, element);
        if (**q == '\0') return fail("Missing ']'");
        if (!isDigitChar(**q)) return fail("Invalid Integer Value");
        const char *end = *q;
        while (isDigitChar(*end)) ++end;
        if (isLetter(*end) || *end == '.' || *end == '_') return fail("Invalid Integer Value");
        element->assign(*q, end);
        *q = end;
        return true;
    }

    // [a, a-b, a-b:c ...], written back with commas and no blanks.
    bool set() {
        const char *q = p_ + 1;
        std::string piece = "[";
        bool first = true;
        for (;;) {
            while (isBlank(*q) || *q == ',') ++q;
            if (*q == ']') break;
            std::string member;
            if (!setElement(&q, &member)) return false;
            while (isBlank(*q)) ++q;
            if (*q == '-') {
                ++q;
                while (isBlank(*q)) ++q;
                std::string last;
                if (!setElement(&q, &last)) return false;
                member += "-" + last;
                while (isBlank(*q)) ++q;
                if (*q == ':') {
                    ++q;
                    while (isBlank(*q)) ++q;
                    std::string step;
                    if (!setElement(&q, &step)) return false;
                    member += ":" + step;
                }
            }
            if (!first) piece += ',';
            piece += member;
            first = false;
        }
        piece += ']';
        if (!placeIsRight(false, false) || !append(piece)) return false;
        p_ = q + 1;
        return true;
    }

    const char *text_;
    const char *p_;
    std::string *command_;
    int line_;
    MacroCompressState_s *state_;
    bool endOfLine_ = false;
};

// ---- reading a stream ----

enum class LineRead { Ok, End, Error, TooLong };

// After the end of a line: a run of carriage returns goes, and behind a carriage return one
// newline, so that CR LF, CR and LF each end one line.
void swallowLineEnd(FILE *stream, bool endedByCarriageReturn) {
    int c = getc(stream);
    while (c == '\r') c = getc(stream);
    if (c == '\n' && endedByCarriageReturn) return;
    if (c != EOF) ungetc(c, stream);
}

// One physical line, without its end. A NUL byte ends the input and stays in the stream.
LineRead readPhysicalLine(FILE *stream, std::string *line) {
    line->clear();
    for (;;) {
        int c = getc(stream);
        if (c == EOF) {
            if (ferror(stream)) return LineRead::Error;
            return line->empty() && feof(stream) ? LineRead::End : LineRead::Ok;
        }
        if (c == '\0') {
            ungetc(c, stream);
            return LineRead::Ok;
        }
        if (c == '\n' || c == '\r') {
            swallowLineEnd(stream, c == '\r');
            return LineRead::Ok;
        }
        if (line->size() >= static_cast<size_t>(MaxMacroCommandLength)) return LineRead::TooLong;
        line->push_back(static_cast<char>(c));
    }
}

// Behind the text of a command: does the command go on in the next line? A $ in the leading
// blanks of the next line, or @ or ! in its first column, starts a new command; blank lines are
// passed over (and counted); anything else continues this one. The character that decides stays
// in the stream.
bool commandEndsHere(FILE *stream, int *lineNumber) {
    int column = 0;
    for (;;) {
        int c = getc(stream);
        if (c == EOF) return true;
        if (c == '\0') {
            ungetc(c, stream);
            return true;
        }
        if (c == ' ' || c == '\t') {
            ++column;
            continue;
        }
        if (c == '\n' || c == '\r') {
            swallowLineEnd(stream, c == '\r');
            ++*lineNumber;
            column = 0;
            continue;
        }
        ungetc(c, stream);
        return c == '$' || ((c == '@' || c == '!') && column == 0);
    }
}

// The words of the older syntax that named the positional option of an action go; the option
// is now written without them.
void removeOldOptionWords(std::string *line) {
    static const char *const OptionWords[] = {"LEVELOP =", "LABELOP =", "STREAMOP =", "VIEWOP =",
                                              "COLORMAPCONTROLOP ="};
    auto removeFirst = [line](const char *word) {
        size_t at = line->find(word);
        if (at != std::string::npos) line->erase(at, strlen(word));
    };
    if (line->find("OP =") != std::string::npos) {
        for (const char *word : OptionWords) removeFirst(word);
    } else {
        removeFirst("STYLEBASE =");
    }
}

// A compressed line that ends in the RAWDATA marker (@1033 behind the last string): the section
// that follows in the stream is read and the marker cut off.
bool takeCompressedRawData(FILE *stream, std::string *command, char **rawData, int *lineNumber, int firstLineNumber) {
    size_t at = command->find_last_of("@'\"");
    if (at == std::string::npos || (*command)[at] != '@') return true;
    const char *q = command->c_str() + at + 1;
    if (strncmp(q, "1033", 4) != 0 || isDigitChar(q[4])) return true;
    for (const char *rest = q + 4; *rest != '\0'; ++rest)
        if (!isBlank(*rest)) return true;
    const char *message = nullptr;
    if (stream == nullptr)
        message = "Commands using RAW DATA currently not supported via ACTION_EXECUTEMACROCOMMAND";
    else if (rawData == nullptr)
        message = "Macro command not allowed in this context";
    else if ((*command)[command->find_first_not_of(" \t")] != '$')  // the line starts with @, ! or $
        message = "Invalid command to use Raw Data";
    if (message != nullptr) {
        ErrBadMacro(message, firstLineNumber, command->c_str(), true);
        return false;
    }
    command->resize(at);
    return LoadRawMacroData(stream, lineNumber, firstLineNumber, rawData);
}

// A command given as one text, for instance by an add-on: its lines are compressed; nothing is
// read from a stream, so raw data cannot follow.
bool compressSingleText(const char *text, std::string *command, char **rawData, int *lineNumber,
                        int *firstLineNumber) {
    MacroCompressState_s state;
    const char *p = text;
    while (*p != '\0') {
        const char *end = p + strcspn(p, "\r\n");
        std::string line(p, end);
        ++*lineNumber;
        if (command->empty() && state.ExpectMajor) {
            *firstLineNumber = *lineNumber;
            if (IsCompressedCommand(line.c_str())) {
                *command = line;
                return takeCompressedRawData(nullptr, command, rawData, lineNumber, *firstLineNumber);
            }
        }
        removeOldOptionWords(&line);
        if (!CompressPartialAsciiCommand(line.c_str(), command, *lineNumber, &state)) {
            command->clear();
            return false;
        }
        if (state.RawDataSeen) {
            ErrBadMacro("Commands using RAW DATA currently not supported via ACTION_EXECUTEMACROCOMMAND",
                        *lineNumber, line.c_str(), false);
            command->clear();
            return false;
        }
        p = end;
        if (*p == '\r' && p[1] == '\n') ++p;
        if (*p != '\0') ++p;
    }
    return true;
}

}  // namespace

bool CompressPartialAsciiCommand(const char *text, std::string *command, int line, MacroCompressState_s *state) {
    REQUIRE(text != nullptr && command != nullptr && state != nullptr);
    return Compressor(text, command, line, state).run();
}

bool IsCompressedCommand(const char *text) {
    if (text == nullptr) return false;
    while (*text == ' ' || *text == '\t') ++text;
    return (*text == '@' || *text == '!' || *text == '$') && isDigitChar(text[1]);
}

bool GetNextCompressedCommand(FILE *stream, const char *singleCommandText, std::string *command, char **rawData,
                              int *lineNumber, int *firstLineNumber) {
    REQUIRE(command != nullptr && (stream != nullptr || singleCommandText != nullptr));
    int localLineNumber = 0;
    int localFirstLineNumber = 0;
    if (lineNumber == nullptr) lineNumber = &localLineNumber;
    if (firstLineNumber == nullptr) firstLineNumber = &localFirstLineNumber;
    command->clear();
    if (rawData != nullptr) *rawData = nullptr;
    if (stream == nullptr) return compressSingleText(singleCommandText, command, rawData, lineNumber, firstLineNumber);

    MacroCompressState_s state;
    auto failed = [&]() {
        command->clear();
        if (rawData != nullptr) DeallocRawMacroData(rawData);
        return false;
    };
    for (;;) {
        int c = getc(stream);
        if (c == EOF || c == '\0') {
            if (c == '\0') ungetc(c, stream);
            if (c == EOF && ferror(stream)) {
                ErrBadMacro("I/O Error While Reading Macro File", *lineNumber, command->c_str(), true);
                return failed();
            }
            break;
        }
        ungetc(c, stream);
        if (!command->empty() && commandEndsHere(stream, lineNumber)) break;

        std::string line;
        LineRead result = readPhysicalLine(stream, &line);
        if (result == LineRead::End) break;
        ++*lineNumber;
        if (result == LineRead::Error) {
            ErrBadMacro("I/O Error While Reading Macro File", *lineNumber, command->c_str(), true);
            return failed();
        }
        if (result == LineRead::TooLong) {
            ErrBadMacro("Macro Command too long", *lineNumber, line.c_str(), false);
            return failed();
        }
        if (command->empty() && state.ExpectMajor) {
            *firstLineNumber = *lineNumber;
            if (IsCompressedCommand(line.c_str())) {
                *command = line;
                if (!takeCompressedRawData(stream, command, rawData, lineNumber, *firstLineNumber)) return failed();
                return true;
            }
        }
        removeOldOptionWords(&line);
        if (!CompressPartialAsciiCommand(line.c_str(), command, *lineNumber, &state)) return failed();
        if (state.RawDataSeen) {
            state.RawDataSeen = false;
            const char *message = nullptr;
            if (state.MajorToken != MacroToken_Action || !ActionCommandSyntaxList[state.MajorIndex].TakesRawData ||
                (rawData != nullptr && *rawData != nullptr))
                message = "Unexpected RAWDATA";
            else if (rawData == nullptr)
                message = "Macro command not allowed in this context";
            if (message != nullptr) {
                ErrBadMacro(message, *lineNumber, line.c_str(), false);
                return failed();
            }
            if (!LoadRawMacroData(stream, lineNumber, *firstLineNumber, rawData)) return failed();
        }
    }
    return true;
}

// ---- command lists ----

bool PushMacroCommand(MacroCommand_s **head, MacroCommand_s **last, const char *command, int lineNumber,
                      int macroVersion, char *rawData) {
    REQUIRE(head != nullptr && command != nullptr);
    REQUIRE(last == nullptr || (*last == nullptr) == (*head == nullptr));
    auto *node = static_cast<MacroCommand_s *>(newmalloc(sizeof(MacroCommand_s)));
    char *copy = DupString(command);
    if (node == nullptr || copy == nullptr) {
        newfree(node);
        newfree(copy);
        newfree(rawData);
        OutOfMemoryMsg();
        return false;
    }
    MacroCommand_s *tail = last != nullptr ? *last : *head;
    if (last == nullptr)
        while (tail != nullptr && tail->Next != nullptr) tail = tail->Next;
    node->Command = copy;
    node->StopHere = false;
    node->Reserved = 0;
    node->LineNumber = lineNumber;
    node->Offset = tail != nullptr ? tail->Offset + 1 : 1;
    node->MacroVersion = static_cast<int16_t>(macroVersion);
    node->RawData = rawData;
    node->Prev = tail;
    node->Next = nullptr;
    if (tail != nullptr)
        tail->Next = node;
    else
        *head = node;
    if (last != nullptr) *last = node;
    return true;
}

void DeallocMacroCommandList(MacroCommand_s **head) {
    REQUIRE(head != nullptr);
    MacroCommand_s *node = *head;
    while (node != nullptr) {
        MacroCommand_s *next = node->Next;
        newfree(node->Command);
        newfree(node->RawData);
        newfree(node);
        node = next;
    }
    *head = nullptr;
}

// ---- raw data ----

bool StuffStringIntoRawData(char **rawData, const char *text) {
    REQUIRE(rawData != nullptr && text != nullptr);
    if (*rawData != nullptr && !TackOnChar(rawData, '\n')) return false;
    if (*rawData == nullptr) {
        *rawData = DupString(text);
        return *rawData != nullptr;
    }
    return TackOnConstString(rawData, text, false);
}

bool LoadRawMacroData(FILE *stream, int *lineNumber, int firstLineNumber, char **rawData) {
    REQUIRE(stream != nullptr && lineNumber != nullptr && rawData != nullptr);
    std::string section;  // std::string doubles its capacity as it grows
    bool hasLines = false;
    for (;;) {
        std::string leading;
        int c = getc(stream);
        while (c == ' ' || c == '\t') {
            leading.push_back(static_cast<char>(c));
            c = getc(stream);
        }
        if (c == EOF && ferror(stream)) {
            ErrBadMacro("I/O Error While Reading Macro File", firstLineNumber, "", true);
            return false;
        }
        if (c == EOF) break;
        if (c == '\0') {
            ungetc(c, stream);
            break;
        }
        // The next command ends the section: $!, or $ or @ and a digit (a compressed command).
        bool nextCommand = false;
        if (c == '$' || c == '@') {
            int second = getc(stream);
            nextCommand = (c == '$' && second == '!') || isDigitChar(static_cast<char>(second));
            if (second != EOF) ungetc(second, stream);
        }
        ungetc(c, stream);
        if (nextCommand) break;

        std::string line;
        LineRead result = readPhysicalLine(stream, &line);
        if (result == LineRead::End) break;
        ++*lineNumber;
        if (result == LineRead::Error || result == LineRead::TooLong) {
            ErrBadMacro(result == LineRead::Error ? "I/O Error While Reading Macro File" : "Macro Command too long",
                        *lineNumber, "", true);
            return false;
        }
        line.insert(0, leading);
        size_t hash = line.find('#');
        if (hash != std::string::npos) {
            if (line.find_first_not_of(" \t") == hash) continue;  // a comment line is dropped
            line.erase(hash);
        }
        if (hasLines) section += '\n';
        section += line;
        hasLines = true;
    }
    char *copy = DupString(section.c_str());
    if (copy == nullptr) {
        OutOfMemoryMsg();
        return false;
    }
    newfree(*rawData);
    *rawData = copy;
    return true;
}

namespace {

// The text between two bars could be a variable reference: a name start, and all on one line.
bool looksLikeReference(const char *start, const char *end) {
    if (start == end) return false;
    char first = *start;
    if (!(first == '$' || isVarNameChar(first))) return false;
    for (const char *p = start; p < end; ++p)
        if (*p == '\n' || *p == '\r') return false;
    return true;
}

}  // namespace

bool GetCookedRawMacroData(const char *raw, int line, const char *command, MacroVarLookUp_pf lookUp,
                           void *clientData, char **cooked) {
    REQUIRE(raw != nullptr && cooked != nullptr);
    if (strchr(raw, '|') == nullptr) {
        *cooked = const_cast<char *>(raw);  // nothing to substitute: the section itself, no copy
        return true;
    }
    std::string result;
    const char *p = raw;
    while (*p != '\0') {
        if (*p != '|') {
            result.push_back(*p++);
            continue;
        }
        const char *close = strchr(p + 1, '|');
        std::string value;
        if (close != nullptr && lookUp != nullptr && looksLikeReference(p + 1, close) &&
            lookUp(std::string(p + 1, close).c_str(), &value, clientData)) {
            result += value;
            p = close + 1;
            continue;
        }
        // Not a known variable: the bar stays, and the scan goes on behind it.
        result.push_back(*p++);
    }
    char *copy = DupString(result.c_str());
    if (copy == nullptr) {
        OutOfMemoryMsg();
        return false;
    }
    *cooked = copy;
    return true;
}

void DeallocRawMacroData(char **rawData, const char *original) {
    REQUIRE(rawData != nullptr);
    if (*rawData != nullptr && *rawData != original) newfree(*rawData);
    *rawData = nullptr;
}

// ---- error reporting ----

namespace {

constexpr size_t ErrorTextBudget = 500;

bool isShowable(const char *text) {
    for (const unsigned char *p = reinterpret_cast<const unsigned char *>(text); *p != '\0'; ++p)
        if (!isprint(*p) && !isspace(*p)) return false;
    return true;
}

size_t budgetLeft(const std::string &text) { return text.size() < ErrorTextBudget ? ErrorTextBudget - text.size() : 0; }

std::string formatted(const char *format, ...) __attribute__((format(printf, 1, 2)));
std::string formatted(const char *format, ...) {
    char buffer[256];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof(buffer), format, args);
    va_end(args);
    return buffer;
}

}  // namespace

// The traceback names every level from the innermost call out to the main macro. Level n > 0 runs
// the function of MacroCallStack[n-1]; each level stands at a command: the failing one for the
// innermost level (`line` and `offset` of the report; without an offset, the command the
// interpreter is running), and for every other level the $!RUNMACROFUNCTION through which it
// called the next, recorded in MacroCallStack[n] (for the main macro, level 0, that is the first
// call).
void ErrBadMacro(const char *message, int line, const char *command, bool isCompressed, int offset) {
    if (offset < 0) offset = MacroCurrentOffset;
    std::string text;
    if (!isCompressed) text = "(PreProcessor): ";
    text += (message != nullptr && *message != '\0') ? message : "<Unknown Error>";
    text += formatted("\n\nError occurred in $! command\nstarting on line %d:\n\n", line);
    if (text.size() > ErrorTextBudget) text.resize(ErrorTextBudget);

    if (command != nullptr && isShowable(command)) {
        if (isCompressed) {
            std::string uncompressed;
            // A command too long for the space left is shown as far as it fits.
            UncompressMacroCommand(command, &uncompressed, budgetLeft(text), "", true);
            if (uncompressed.size() > budgetLeft(text)) uncompressed.resize(budgetLeft(text));
            text += uncompressed;
        } else {
            std::string shown = std::string("Text where error occurred: ") + command;
            if (text.size() + shown.size() < 470) text += shown;
        }
    }

    int callLevel = static_cast<int>(MacroCallStack.size());
    if (callLevel > 0 && budgetLeft(text) > 40) {
        text += "\n\nCall Traceback:\n";
        text += "Level Offset Line Function\n";
        for (int level = callLevel; level >= 0; --level) {
            if (budgetLeft(text) < 71) break;
            int levelLine = level == callLevel ? line : MacroCallStack[level].LineNumber;
            // Offsets count from 1; 0 stands for a position that no list gives (a quick macro call).
            int levelOffset = level == callLevel ? offset : MacroCallStack[level].Offset;
            if (levelOffset < 0) levelOffset = 0;
            if (level == 0) {
                text += formatted("0       %-4d       %-4d   MAIN", levelOffset, levelLine);
                break;
            }
            const MacroCallFrame_s &frame = MacroCallStack[level - 1];
            text += formatted("%-3d     %-4d       %-4d   %.15s (", level, levelOffset, levelLine,
                              frame.FunctionName.c_str());
            for (size_t i = 0; i < frame.Parameters.size(); ++i) {
                if (i > 0) text += ',';
                text += frame.Parameters[i];
            }
            text += ")\n";
        }
    }
    if (text.size() > ErrorTextBudget) text.resize(ErrorTextBudget);

    // A macro error is shown even while message boxes are suspended.
    int suspended = MessageBoxesSuspended;
    MessageBoxesSuspended = 0;
    ErrMsg("%s", text.c_str());
    MessageBoxesSuspended = suspended;
}
