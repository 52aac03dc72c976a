// The numeric expression evaluator: precedence and associativity of every operator level, signs
// against powers, the conditional operator and relations, the functions and constants, and each
// error code with its message. Expected values are worked out by hand beside each case.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "base/macro/expr.h"

namespace {

double Eval(const char *text) {
    double value = -12345.0;
    EXPECT_TRUE(ExprEvaluate(text, &value, nullptr, nullptr)) << text << ": " << ExprErrorMessage();
    return value;
}

// The code of the failure of `text`; the message goes to *message.
int Fails(const char *text, std::string *message = nullptr) {
    double value = -12345.0;
    EXPECT_FALSE(ExprEvaluate(text, &value, nullptr, nullptr)) << text;
    EXPECT_EQ(value, -12345.0) << "a failed evaluation leaves the result alone";
    if (message != nullptr) *message = ExprErrorMessage();
    return ExprErrorCode();
}

bool LookUpAB(const char *name, double *value, void *clientData) {
    ++*static_cast<int *>(clientData);
    if (strcmp(name, "A") == 0) *value = 4.0;
    else if (strcmp(name, "B") == 0) *value = 0.5;
    else return false;
    return true;
}

}  // namespace

TEST(MacroExpr, ArithmeticPrecedenceAndLeftAssociativity) {
    EXPECT_DOUBLE_EQ(Eval("1+2*3"), 7.0);
    EXPECT_DOUBLE_EQ(Eval("(1+2)*3"), 9.0);
    EXPECT_DOUBLE_EQ(Eval("10-4-3"), 3.0);     // (10-4)-3, not 10-(4-3) = 9
    EXPECT_DOUBLE_EQ(Eval("100/10/5"), 2.0);   // (100/10)/5, not 100/(10/5) = 50
    EXPECT_DOUBLE_EQ(Eval("2*7%4"), 2.0);      // (2*7)%4 = 14%4, not 2*(7%4) = 6
    EXPECT_DOUBLE_EQ(Eval("7.5 % 2"), 1.5);    // fmod
    EXPECT_DOUBLE_EQ(Eval("-7 % 3"), -1.0);    // fmod keeps the sign of the dividend
    EXPECT_DOUBLE_EQ(Eval(" 2.5e1 + .5 "), 25.5);
    EXPECT_DOUBLE_EQ(Eval("1.E2"), 100.0);
}

TEST(MacroExpr, SignsBindLooserThanPowersAndPowersAssociateRight) {
    EXPECT_DOUBLE_EQ(Eval("-2^2"), -4.0);   // -(2^2)
    EXPECT_DOUBLE_EQ(Eval("(-2)^2"), 4.0);
    EXPECT_DOUBLE_EQ(Eval("2^3^2"), 512.0);  // 2^(3^2) = 2^9, not (2^3)^2 = 64
    EXPECT_DOUBLE_EQ(Eval("2**3**2"), 512.0);
    EXPECT_DOUBLE_EQ(Eval("2^-1"), 0.5);
    EXPECT_DOUBLE_EQ(Eval("2^-1^2"), 0.5);   // 2^(-(1^2))
    EXPECT_DOUBLE_EQ(Eval("--1"), 1.0);
    EXPECT_DOUBLE_EQ(Eval("-+-3"), 3.0);
    EXPECT_DOUBLE_EQ(Eval("3*-2"), -6.0);
    EXPECT_DOUBLE_EQ(Eval("2*3^2"), 18.0);   // powers before products
    EXPECT_DOUBLE_EQ(Eval("-3^2 + 10"), 1.0);
}

TEST(MacroExpr, ConditionalOperator) {
    EXPECT_DOUBLE_EQ(Eval("(1<2 ? 3 : 4) + 1"), 4.0);
    EXPECT_DOUBLE_EQ(Eval("1>2 ? 3 : 4"), 4.0);
    // Nesting to the right: 1>2 ? 10 : (2>1 ? 20 : 30).
    EXPECT_DOUBLE_EQ(Eval("1>2 ? 10 : 2>1 ? 20 : 30"), 20.0);
    EXPECT_DOUBLE_EQ(Eval("1<2 ? 2>3 ? 1 : 2 : 3"), 2.0);
    EXPECT_DOUBLE_EQ(Eval("(1<2) ? 5 : 6"), 5.0);
    EXPECT_DOUBLE_EQ(Eval("!(1<2) ? 5 : 6"), 6.0);
    EXPECT_DOUBLE_EQ(Eval("1+1 < 3 ? 7 : 8"), 7.0);  // the relation's sides are sums
    EXPECT_DOUBLE_EQ(Eval("1 < 2 ? 4 - 1 : 9"), 3.0);
    EXPECT_DOUBLE_EQ(Eval("max(1<2 ? 3 : 4, 2)"), 3.0);
}

TEST(MacroExpr, RelationsAndLogic) {
    EXPECT_DOUBLE_EQ(Eval("1<=1 ? 1 : 0"), 1.0);
    EXPECT_DOUBLE_EQ(Eval("1>=2 ? 1 : 0"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("2==2 ? 1 : 0"), 1.0);
    EXPECT_DOUBLE_EQ(Eval("2!=2 ? 1 : 0"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("1<2 && 2<1 ? 1 : 0"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("1<2 || 2<1 ? 1 : 0"), 1.0);
    // && binds tighter: true || (false && false) is true; (true || false) && false would be false.
    EXPECT_DOUBLE_EQ(Eval("1<2 || 2<1 && 3<1 ? 1 : 0"), 1.0);
    EXPECT_DOUBLE_EQ(Eval("(1<2 || 2<1) && 3<1 ? 1 : 0"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("!(1<2 && 2<3) ? 1 : 0"), 0.0);
}

TEST(MacroExpr, RelationsDoNotChainOrMixWithArithmetic) {
    std::string message;
    EXPECT_EQ(Fails("1<2==3", &message), ExprError_Syntax);
    EXPECT_EQ(message, "syntax error");
    EXPECT_EQ(Fails("(1<2) + 1", &message), ExprError_Syntax);
    EXPECT_EQ(message, "syntax error");
    EXPECT_EQ(Fails("1 ? 2 : 3"), ExprError_Syntax);          // a number is no condition
    EXPECT_EQ(Fails("1<2 ? 3<4 : 5"), ExprError_Syntax);      // a relation is no value
    EXPECT_EQ(Fails("!!(1<2) ? 1 : 0"), ExprError_Syntax);    // ! only once
    EXPECT_EQ(Fails("!1<2 ? 1 : 0"), ExprError_Syntax);       // ! needs its parentheses
    EXPECT_EQ(Fails("!(3) ? 1 : 0"), ExprError_Syntax);       // ! of a number
    EXPECT_EQ(Fails("1 && 2 ? 1 : 0"), ExprError_Syntax);
    EXPECT_EQ(Fails("1<2 ? 3"), ExprError_Syntax);
    EXPECT_EQ(Fails("(1+2"), ExprError_Syntax);
    EXPECT_EQ(Fails("1 2"), ExprError_Syntax);
    EXPECT_EQ(Fails("()"), ExprError_Syntax);
    EXPECT_EQ(Fails("1 <> 2 ? 1 : 0"), ExprError_Syntax);
    EXPECT_EQ(Fails("#"), ExprError_Syntax);
}

TEST(MacroExpr, ARelationAtTheTopWantsTheConditionalOperator) {
    std::string message;
    EXPECT_EQ(Fails("1<2", &message), ExprError_Syntax);
    EXPECT_EQ(message, "Expecting the conditional operator (? and :) to follow the relation.");
    EXPECT_EQ(Fails("(1<2 && 2<3)", &message), ExprError_Syntax);
    EXPECT_EQ(message, "Expecting the conditional operator (? and :) to follow the relation.");
}

TEST(MacroExpr, EmptyText) {
    std::string message;
    EXPECT_EQ(Fails("", &message), ExprError_Empty);
    EXPECT_EQ(message, "Expecting an expression.");
    EXPECT_EQ(Fails(" \t ", &message), ExprError_Empty);
    EXPECT_EQ(message, "Expecting an expression.");
}

TEST(MacroExpr, MalformedOperatorsNameWhatFollows) {
    std::string message;
    EXPECT_EQ(Fails("1<2 |x 2<3 ? 1 : 0", &message), ExprError_Syntax);
    EXPECT_EQ(message, "Expecting \"||\" but found \"|x\" instead.");
    EXPECT_EQ(Fails("1<2 &x 2<3 ? 1 : 0", &message), ExprError_Syntax);
    EXPECT_EQ(message, "Expecting \"&&\" but found \"&x\" instead.");
    EXPECT_EQ(Fails("1 = 2 ? 1 : 0", &message), ExprError_Syntax);
    EXPECT_EQ(message, "Expecting \"==\" but found \"= \" instead.");
}

TEST(MacroExpr, FunctionsOfOneAndTwoArguments) {
    EXPECT_DOUBLE_EQ(Eval("abs(-3)"), 3.0);
    EXPECT_DOUBLE_EQ(Eval("acos(1)"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("asin(1)"), M_PI / 2);
    EXPECT_DOUBLE_EQ(Eval("atan(1)"), M_PI / 4);
    EXPECT_DOUBLE_EQ(Eval("ceil(1.2)"), 2.0);
    EXPECT_DOUBLE_EQ(Eval("ceil(-1.2)"), -1.0);
    EXPECT_DOUBLE_EQ(Eval("cos(0)"), 1.0);
    EXPECT_DOUBLE_EQ(Eval("cosh(0)"), 1.0);
    EXPECT_DOUBLE_EQ(Eval("exp(1)"), M_E);
    EXPECT_DOUBLE_EQ(Eval("floor(-1.2)"), -2.0);
    EXPECT_DOUBLE_EQ(Eval("frac(2.75)"), 0.75);
    EXPECT_DOUBLE_EQ(Eval("frac(-2.75)"), -0.75);
    EXPECT_DOUBLE_EQ(Eval("int(-2.75)"), -2.0);   // the integer part, toward zero
    EXPECT_DOUBLE_EQ(Eval("int(2.75)"), 2.0);
    EXPECT_DOUBLE_EQ(Eval("log(1)"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("log10(1000)"), 3.0);
    EXPECT_DOUBLE_EQ(Eval("sin(0)"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("sinh(0)"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("sqrt(16)"), 4.0);
    EXPECT_DOUBLE_EQ(Eval("tan(0)"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("tanh(0)"), 0.0);
    EXPECT_DOUBLE_EQ(Eval("atan2(1, 1)"), M_PI / 4);
    EXPECT_DOUBLE_EQ(Eval("atan2(1, -1)"), 3 * M_PI / 4);  // the quadrant counts
    EXPECT_DOUBLE_EQ(Eval("max(2, 5)"), 5.0);
    EXPECT_DOUBLE_EQ(Eval("min(2, 5)"), 2.0);
    EXPECT_DOUBLE_EQ(Eval("pow(2, 10)"), 1024.0);
    EXPECT_DOUBLE_EQ(Eval("SQRT(9) + Max(1,2)"), 5.0);  // names in any case
    EXPECT_DOUBLE_EQ(Eval("sqrt(sqrt(16)) * 2"), 4.0);
}

TEST(MacroExpr, Constants) {
    EXPECT_DOUBLE_EQ(Eval("PI"), 3.14159265358979);
    EXPECT_DOUBLE_EQ(Eval("pi"), 3.14159265358979);
    EXPECT_DOUBLE_EQ(Eval("BASEe"), 2.71828182845904);
    EXPECT_DOUBLE_EQ(Eval("basee"), 2.71828182845904);
    EXPECT_DOUBLE_EQ(Eval("DEG"), 57.2957795130824);
    EXPECT_DOUBLE_EQ(Eval("GAMMA"), 0.577215664901533);
    EXPECT_DOUBLE_EQ(Eval("PHI"), 1.61803398849895);
    EXPECT_DOUBLE_EQ(Eval("RAD"), 0.0174532925199433);
    EXPECT_DOUBLE_EQ(Eval("2*pi"), 6.28318530717958);
}

TEST(MacroExpr, UnknownNamesGoToTheLookUp) {
    int calls = 0;
    double value = 0.0;
    ASSERT_TRUE(ExprEvaluate("A*B + 1", &value, LookUpAB, &calls));
    EXPECT_DOUBLE_EQ(value, 3.0);
    EXPECT_EQ(calls, 2);
    calls = 0;
    ASSERT_TRUE(ExprEvaluate("pi", &value, LookUpAB, &calls));
    EXPECT_EQ(calls, 0) << "a constant is not looked up";
    EXPECT_FALSE(ExprEvaluate("A + C", &value, LookUpAB, &calls));
    EXPECT_EQ(ExprErrorCode(), ExprError_UndefinedIdentifier);
    EXPECT_STREQ(ExprErrorMessage(), "Identifier C is undefined.");
    std::string message;
    EXPECT_EQ(Fails("1 + xyz", &message), ExprError_UndefinedConstant);
    EXPECT_EQ(message, "Constant xyz is undefined.");
}

TEST(MacroExpr, FunctionErrors) {
    std::string message;
    EXPECT_EQ(Fails("foo(1)", &message), ExprError_UndefinedFunction);
    EXPECT_EQ(message, "Function foo is undefined.");
    EXPECT_EQ(Fails("sqrt(1, 2)", &message), ExprError_ArgumentCount);
    EXPECT_EQ(message, "Function, sqrt, expects one argument.");
    EXPECT_EQ(Fails("max(1)", &message), ExprError_ArgumentCount);
    EXPECT_EQ(message, "Function, max, expects two arguments.");
    EXPECT_EQ(Fails("sin()", &message), ExprError_ArgumentCount);
    EXPECT_EQ(Fails("sqrt(-1)", &message), ExprError_Domain);
    EXPECT_EQ(message, "Input is outside of the sqrt function's valid domain.");
    EXPECT_EQ(Fails("acos(2)", &message), ExprError_Domain);
    EXPECT_EQ(message, "Input is outside of the acos function's valid domain.");
    EXPECT_EQ(Fails("exp(1000)", &message), ExprError_Range);
    EXPECT_EQ(message, "Result is outside of the exp function's valid range.");
    EXPECT_EQ(Fails("log(0)", &message), ExprError_Range);
    EXPECT_EQ(message, "Result is outside of the log function's valid range.");
    EXPECT_EQ(Fails("(-8)^(1/3)", &message), ExprError_Domain);
    EXPECT_EQ(message, "Input is outside of the pow function's valid domain.");
}

TEST(MacroExpr, DivisionByZeroIsAnExactTest) {
    std::string message;
    EXPECT_EQ(Fails("1/0", &message), ExprError_ZeroDenominator);
    EXPECT_EQ(message, "Expecting a non-zero denominator.");
    EXPECT_EQ(Fails("7 % 0", &message), ExprError_ZeroDenominator);
    EXPECT_EQ(message, "Expecting a non-zero denominator.");
    EXPECT_EQ(Fails("1/(2-2)"), ExprError_ZeroDenominator);
    EXPECT_DOUBLE_EQ(Eval("1/1e-300"), 1e300);
    EXPECT_DOUBLE_EQ(Eval("1 % 1e-300"), std::fmod(1.0, 1e-300));
}

TEST(MacroExpr, OnlyTheFirstErrorIsKept) {
    std::string message;
    EXPECT_EQ(Fails("1/0 + foo(1)", &message), ExprError_ZeroDenominator);
    EXPECT_EQ(Fails("foo(1) + 1/0", &message), ExprError_UndefinedFunction);
    EXPECT_EQ(Fails("sqrt(-1) + )", &message), ExprError_Domain);  // the later syntax error is not kept
    // Both branches of a conditional are operands that are evaluated.
    EXPECT_EQ(Fails("1<2 ? 1 : 1/0"), ExprError_ZeroDenominator);
}

TEST(MacroExpr, NestingTooDeepIsAStackOverflow) {
    std::string deep = std::string(300, '(') + "1" + std::string(300, ')');
    std::string message;
    EXPECT_EQ(Fails(deep.c_str(), &message), ExprError_Syntax);
    EXPECT_EQ(message, "yacc stack overflow");
    std::string signs = std::string(300, '-') + "1";
    EXPECT_EQ(Fails(signs.c_str()), ExprError_Syntax);
    std::string fine = std::string(50, '(') + "2" + std::string(50, ')');
    EXPECT_DOUBLE_EQ(Eval(fine.c_str()), 2.0);
}

TEST(MacroExpr, SuccessClearsTheError) {
    Fails("1/0");
    EXPECT_DOUBLE_EQ(Eval("1"), 1.0);
    EXPECT_EQ(ExprErrorCode(), ExprError_None);
    EXPECT_STREQ(ExprErrorMessage(), "");
}
