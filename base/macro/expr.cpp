// The numeric expression evaluator: a recursive-descent parser that evaluates as it reduces.
// Grammar, loosest first:
//   top        := conditional                       (a bare relation is refused)
//   conditional:= or [ '?' conditional ':' conditional ]   (nests to the right)
//   or         := and { '||' and }                  (relations only)
//   and        := compare { '&&' compare }          (relations only)
//   compare    := sum [ relop sum ]                 (one relop: relations do not chain)
//   sum        := product { ('+'|'-') product }
//   product    := unary { ('*'|'/'|'%') unary }
//   unary      := ('-'|'+') unary | power
//   power      := primary [ ('^'|'**') unary ]      (right-associative; 2^-1 is allowed)
//   primary    := number | name | name '(' args ')' | '(' conditional ')' | '!' '(' conditional ')'
// Every rule yields a value that is either a number or a relation (a truth value); an operator
// applied to the wrong one of the two is a syntax error, which is how "(1<2) + 1" and "1<2<3"
// are refused while "(1<2)" stays usable as a condition. Both branches of a conditional are
// evaluated, like every other operand, so an error in the branch not taken is still reported.
// Relies on: the C library.
#include "base/macro/expr.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Nesting deeper than this (parentheses, signs, powers and conditionals counted together) is
// refused as a parser stack overflow rather than risking the machine stack.
constexpr int MaxParseDepth = 200;

enum class Tok {
    End, Number, Name, Plus, Minus, Star, Slash, Percent, Power, LParen, RParen, Comma, Question,
    Colon, Lt, Le, Gt, Ge, EqEq, Ne, OrOr, AndAnd, Not, Bad, LexError
};

struct Token {
    Tok kind = Tok::End;
    double number = 0.0;
    std::string text;  // the name, or the message of a malformed operator
};

struct Value {
    double number = 0.0;
    bool isRelation = false;  // a truth value in number (0 or 1), usable only as a condition
};

struct Constant {
    const char *name;
    double value;
};

const Constant Constants[] = {
    {"BASEE", 2.71828182845904}, {"DEG", 57.2957795130824}, {"GAMMA", 0.577215664901533},
    {"PHI", 1.61803398849895},   {"PI", 3.14159265358979},  {"RAD", 0.0174532925199433},
};

double fractionalPart(double x) { return x - std::trunc(x); }
double maxOf(double a, double b) { return a > b ? a : b; }
double minOf(double a, double b) { return a < b ? a : b; }

struct Function {
    const char *name;  // lower case
    double (*one)(double);
    double (*two)(double, double);
};

const Function Functions[] = {
    {"abs", static_cast<double (*)(double)>(std::fabs), nullptr},
    {"acos", static_cast<double (*)(double)>(std::acos), nullptr},
    {"asin", static_cast<double (*)(double)>(std::asin), nullptr},
    {"atan", static_cast<double (*)(double)>(std::atan), nullptr},
    {"ceil", static_cast<double (*)(double)>(std::ceil), nullptr},
    {"cos", static_cast<double (*)(double)>(std::cos), nullptr},
    {"cosh", static_cast<double (*)(double)>(std::cosh), nullptr},
    {"exp", static_cast<double (*)(double)>(std::exp), nullptr},
    {"floor", static_cast<double (*)(double)>(std::floor), nullptr},
    {"frac", fractionalPart, nullptr},
    {"int", static_cast<double (*)(double)>(std::trunc), nullptr},
    {"log", static_cast<double (*)(double)>(std::log), nullptr},
    {"log10", static_cast<double (*)(double)>(std::log10), nullptr},
    {"sin", static_cast<double (*)(double)>(std::sin), nullptr},
    {"sinh", static_cast<double (*)(double)>(std::sinh), nullptr},
    {"sqrt", static_cast<double (*)(double)>(std::sqrt), nullptr},
    {"tan", static_cast<double (*)(double)>(std::tan), nullptr},
    {"tanh", static_cast<double (*)(double)>(std::tanh), nullptr},
    {"atan2", nullptr, static_cast<double (*)(double, double)>(std::atan2)},
    {"max", nullptr, maxOf},
    {"min", nullptr, minOf},
    {"pow", nullptr, static_cast<double (*)(double, double)>(std::pow)},
};

bool equalIgnoringCase(const std::string &a, const char *b) {
    size_t i = 0;
    for (; i < a.size() && b[i] != '\0'; ++i)
        if (tolower(static_cast<unsigned char>(a[i])) != tolower(static_cast<unsigned char>(b[i]))) return false;
    return i == a.size() && b[i] == '\0';
}

// What the last evaluation left behind.
int lastErrorCode = ExprError_None;
std::string lastErrorMessage;

class Parser {
  public:
    Parser(const char *text, ExprLookUp_pf lookUp, void *clientData)
        : text_(text), lookUp_(lookUp), clientData_(clientData) {}

    bool evaluate(double *result) {
        next();
        if (current_.kind == Tok::End) {
            fail(ExprError_Empty, "Expecting an expression.");
            return false;
        }
        Value value = conditional();
        if (!aborted_) {
            if (current_.kind != Tok::End)
                syntaxError();
            else if (value.isRelation)
                fail(ExprError_Syntax, "Expecting the conditional operator (? and :) to follow the relation.");
        }
        if (errorCode_ != ExprError_None) return false;
        *result = value.number;
        return true;
    }

    int errorCode() const { return errorCode_; }
    const std::string &errorMessage() const { return errorMessage_; }

  private:
    // ---- tokens ----
    void next() {
        const char *p = text_ + pos_;
        while (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\r') ++p;
        const char *start = p;
        current_ = Token();
        char c = *p;
        auto two = [&](char second) { return p[1] == second; };
        auto malformed = [&](const char *wanted, char first) {
            // The character after the lone one is quoted; the end of the text quotes nothing.
            current_.kind = Tok::LexError;
            current_.text = std::string("Expecting \"") + wanted + "\" but found \"" + first;
            if (p[1] != '\0') current_.text += p[1];
            current_.text += "\" instead.";
            ++p;
        };
        if (c == '\0') {
            current_.kind = Tok::End;
        } else if (isdigit(static_cast<unsigned char>(c)) ||
                   (c == '.' && isdigit(static_cast<unsigned char>(p[1])))) {
            while (isdigit(static_cast<unsigned char>(*p))) ++p;
            if (*p == '.') {
                ++p;
                while (isdigit(static_cast<unsigned char>(*p))) ++p;
            }
            if ((*p == 'e' || *p == 'E') &&
                (isdigit(static_cast<unsigned char>(p[1])) ||
                 ((p[1] == '+' || p[1] == '-') && isdigit(static_cast<unsigned char>(p[2]))))) {
                p += 2;
                while (isdigit(static_cast<unsigned char>(*p))) ++p;
            }
            current_.kind = Tok::Number;
            current_.number = strtod(std::string(start, p).c_str(), nullptr);
        } else if (isalpha(static_cast<unsigned char>(c)) || c == '_') {
            while (isalnum(static_cast<unsigned char>(*p)) || *p == '_') ++p;
            current_.kind = Tok::Name;
            current_.text.assign(start, p);
        } else {
            ++p;
            switch (c) {
                case '+': current_.kind = Tok::Plus; break;
                case '-': current_.kind = Tok::Minus; break;
                case '*':
                    if (*p == '*') {
                        ++p;
                        current_.kind = Tok::Power;
                    } else {
                        current_.kind = Tok::Star;
                    }
                    break;
                case '/': current_.kind = Tok::Slash; break;
                case '%': current_.kind = Tok::Percent; break;
                case '^': current_.kind = Tok::Power; break;
                case '(': current_.kind = Tok::LParen; break;
                case ')': current_.kind = Tok::RParen; break;
                case ',': current_.kind = Tok::Comma; break;
                case '?': current_.kind = Tok::Question; break;
                case ':': current_.kind = Tok::Colon; break;
                case '<':
                    if (*p == '=') ++p, current_.kind = Tok::Le;
                    else current_.kind = Tok::Lt;
                    break;
                case '>':
                    if (*p == '=') ++p, current_.kind = Tok::Ge;
                    else current_.kind = Tok::Gt;
                    break;
                case '!':
                    if (*p == '=') ++p, current_.kind = Tok::Ne;
                    else current_.kind = Tok::Not;
                    break;
                case '=':
                    --p;
                    if (two('=')) p += 2, current_.kind = Tok::EqEq;
                    else malformed("==", '=');
                    break;
                case '|':
                    --p;
                    if (two('|')) p += 2, current_.kind = Tok::OrOr;
                    else malformed("||", '|');
                    break;
                case '&':
                    --p;
                    if (two('&')) p += 2, current_.kind = Tok::AndAnd;
                    else malformed("&&", '&');
                    break;
                default: current_.kind = Tok::Bad; break;
            }
        }
        pos_ = static_cast<size_t>(p - text_);
    }

    bool accept(Tok kind) {
        if (aborted_ || current_.kind != kind) return false;
        next();
        return true;
    }

    bool expect(Tok kind) {
        if (aborted_) return false;
        if (current_.kind != kind) {
            syntaxError();
            return false;
        }
        next();
        return true;
    }

    // ---- errors ----
    void fail(int code, const std::string &message) {
        if (errorCode_ != ExprError_None) return;  // only the first error is kept
        errorCode_ = code;
        errorMessage_ = message;
    }

    // Ends the parse. A malformed operator has its own message; anything else is a plain
    // syntax error.
    void syntaxError() {
        if (aborted_) return;
        fail(ExprError_Syntax, current_.kind == Tok::LexError ? current_.text : std::string("syntax error"));
        aborted_ = true;
    }

    // A number where a relation must stand, or a relation where a number must stand.
    bool wrongKind(const Value &value, bool wantRelation) {
        if (value.isRelation == wantRelation) return false;
        syntaxError();
        return true;
    }

    // Calls a C library function and turns its errno into the domain or range error.
    void checkErrno(const char *name) {
        if (errno == EDOM)
            fail(ExprError_Domain, std::string("Input is outside of the ") + name + " function's valid domain.");
        else if (errno == ERANGE)
            fail(ExprError_Range, std::string("Result is outside of the ") + name + " function's valid range.");
    }

    struct DepthGuard {
        Parser *parser;
        explicit DepthGuard(Parser *p) : parser(p) {
            if (++parser->depth_ > MaxParseDepth && !parser->aborted_) {
                parser->fail(ExprError_Syntax, "yacc stack overflow");
                parser->aborted_ = true;
            }
        }
        ~DepthGuard() { --parser->depth_; }
    };

    // ---- rules ----
    Value conditional() {
        DepthGuard guard(this);
        if (aborted_) return Value();
        Value condition = logicalOr();
        if (aborted_ || current_.kind != Tok::Question) return condition;
        if (wrongKind(condition, true)) return Value();
        next();
        Value whenTrue = conditional();
        if (aborted_ || wrongKind(whenTrue, false) || !expect(Tok::Colon)) return Value();
        Value whenFalse = conditional();
        if (aborted_ || wrongKind(whenFalse, false)) return Value();
        return Value{condition.number != 0.0 ? whenTrue.number : whenFalse.number, false};
    }

    Value logicalOr() {
        Value left = logicalAnd();
        while (!aborted_ && current_.kind == Tok::OrOr) {
            if (wrongKind(left, true)) return Value();
            next();
            Value right = logicalAnd();
            if (aborted_ || wrongKind(right, true)) return Value();
            left = Value{(left.number != 0.0 || right.number != 0.0) ? 1.0 : 0.0, true};
        }
        return left;
    }

    Value logicalAnd() {
        Value left = compare();
        while (!aborted_ && current_.kind == Tok::AndAnd) {
            if (wrongKind(left, true)) return Value();
            next();
            Value right = compare();
            if (aborted_ || wrongKind(right, true)) return Value();
            left = Value{(left.number != 0.0 && right.number != 0.0) ? 1.0 : 0.0, true};
        }
        return left;
    }

    Value compare() {
        Value left = sum();
        if (aborted_) return left;
        Tok op = current_.kind;
        if (op != Tok::Lt && op != Tok::Le && op != Tok::Gt && op != Tok::Ge && op != Tok::EqEq && op != Tok::Ne)
            return left;
        if (wrongKind(left, false)) return Value();
        next();
        Value right = sum();
        if (aborted_ || wrongKind(right, false)) return Value();
        double a = left.number, b = right.number;
        bool holds = op == Tok::Lt   ? a < b
                     : op == Tok::Le ? a <= b
                     : op == Tok::Gt ? a > b
                     : op == Tok::Ge ? a >= b
                     : op == Tok::EqEq ? a == b
                                       : a != b;
        return Value{holds ? 1.0 : 0.0, true};
    }

    Value sum() {
        Value left = product();
        while (!aborted_ && (current_.kind == Tok::Plus || current_.kind == Tok::Minus)) {
            bool add = current_.kind == Tok::Plus;
            if (wrongKind(left, false)) return Value();
            next();
            Value right = product();
            if (aborted_ || wrongKind(right, false)) return Value();
            left.number = add ? left.number + right.number : left.number - right.number;
        }
        return left;
    }

    Value product() {
        Value left = unary();
        while (!aborted_ &&
               (current_.kind == Tok::Star || current_.kind == Tok::Slash || current_.kind == Tok::Percent)) {
            Tok op = current_.kind;
            if (wrongKind(left, false)) return Value();
            next();
            Value right = unary();
            if (aborted_ || wrongKind(right, false)) return Value();
            if (op == Tok::Star) {
                left.number *= right.number;
            } else if (right.number == 0.0) {  // exact: a tiny denominator is still a denominator
                fail(ExprError_ZeroDenominator, "Expecting a non-zero denominator.");
                left.number = 0.0;
            } else if (op == Tok::Slash) {
                left.number /= right.number;
            } else {
                errno = 0;
                left.number = std::fmod(left.number, right.number);
                checkErrno("fmod");
            }
        }
        return left;
    }

    Value unary() {
        if (current_.kind != Tok::Minus && current_.kind != Tok::Plus) return power();
        DepthGuard guard(this);
        if (aborted_) return Value();
        bool negate = current_.kind == Tok::Minus;
        next();
        Value operand = unary();
        if (aborted_ || wrongKind(operand, false)) return Value();
        if (negate) operand.number = -operand.number;
        return operand;
    }

    Value power() {
        Value base = primary();
        if (aborted_ || current_.kind != Tok::Power) return base;
        if (wrongKind(base, false)) return Value();
        DepthGuard guard(this);
        if (aborted_) return Value();
        next();
        Value exponent = unary();
        if (aborted_ || wrongKind(exponent, false)) return Value();
        errno = 0;
        double result = std::pow(base.number, exponent.number);
        checkErrno("pow");
        return Value{result, false};
    }

    Value primary() {
        if (aborted_) return Value();
        switch (current_.kind) {
            case Tok::Number: {
                Value value{current_.number, false};
                next();
                return value;
            }
            case Tok::Name: {
                std::string name = current_.text;
                next();
                if (current_.kind == Tok::LParen) return call(name);
                return named(name);
            }
            case Tok::LParen: {
                next();
                Value inner = conditional();
                if (!expect(Tok::RParen)) return Value();
                return inner;
            }
            case Tok::Not: {
                next();
                if (!expect(Tok::LParen)) return Value();
                Value inner = conditional();
                if (aborted_ || wrongKind(inner, true) || !expect(Tok::RParen)) return Value();
                return Value{inner.number != 0.0 ? 0.0 : 1.0, true};
            }
            default: syntaxError(); return Value();
        }
    }

    Value named(const std::string &name) {
        for (const Constant &constant : Constants)
            if (equalIgnoringCase(name, constant.name)) return Value{constant.value, false};
        double value = 0.0;
        if (lookUp_ == nullptr)
            fail(ExprError_UndefinedConstant, "Constant " + name + " is undefined.");
        else if (!lookUp_(name.c_str(), &value, clientData_))
            fail(ExprError_UndefinedIdentifier, "Identifier " + name + " is undefined.");
        return Value{value, false};
    }

    Value call(const std::string &name) {
        next();  // the '('
        std::vector<double> arguments;
        if (current_.kind != Tok::RParen) {
            do {
                Value argument = conditional();
                if (aborted_ || wrongKind(argument, false)) return Value();
                arguments.push_back(argument.number);
            } while (accept(Tok::Comma));
        }
        if (!expect(Tok::RParen)) return Value();
        const Function *function = nullptr;
        for (const Function &candidate : Functions)
            if (equalIgnoringCase(name, candidate.name)) function = &candidate;
        if (function == nullptr) {
            fail(ExprError_UndefinedFunction, "Function " + name + " is undefined.");
            return Value();
        }
        size_t wanted = function->one != nullptr ? 1 : 2;
        if (arguments.size() != wanted) {
            fail(ExprError_ArgumentCount, "Function, " + name +
                                              (wanted == 1 ? ", expects one argument." : ", expects two arguments."));
            return Value();
        }
        errno = 0;
        double result = wanted == 1 ? function->one(arguments[0]) : function->two(arguments[0], arguments[1]);
        checkErrno(function->name);
        return Value{result, false};
    }

    const char *text_;
    size_t pos_ = 0;
    Token current_;
    ExprLookUp_pf lookUp_;
    void *clientData_;
    int errorCode_ = ExprError_None;
    std::string errorMessage_;
    bool aborted_ = false;  // a syntax error ends the parse; other errors let it run on
    int depth_ = 0;
};

}  // namespace

bool ExprEvaluate(const char *text, double *result, ExprLookUp_pf lookUp, void *clientData) {
    if (text == nullptr) text = "";
    Parser parser(text, lookUp, clientData);
    double value = 0.0;
    bool ok = parser.evaluate(&value);
    lastErrorCode = parser.errorCode();
    lastErrorMessage = parser.errorMessage();
    if (ok && result != nullptr) *result = value;
    return ok;
}

const char *ExprErrorMessage() { return lastErrorMessage.c_str(); }

int ExprErrorCode() { return lastErrorCode; }
