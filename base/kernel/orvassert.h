// Assertions of the system. REQUIRE states a precondition, CHECK an invariant; both catch errors
// of the program (or of an add-on), never of the input, which always gets a message instead.
// A failure prints what failed, lets OrvanexMopupOnAssert close the log (and, interactively,
// offer to save the layout), then aborts. Compiled out when NDEBUG is defined, like assert.
#pragma once

[[noreturn]] void OrvanexAssertFailed(const char *kind, const char *expression, const char *file, int line);

#ifdef NDEBUG
// sizeof names the expression without evaluating it, so variables used only here stay used.
#define REQUIRE(expr) ((void)sizeof((expr) ? 1 : 0))
#define CHECK(expr) ((void)sizeof((expr) ? 1 : 0))
#else
#define REQUIRE(expr) ((expr) ? (void)0 : OrvanexAssertFailed("Pre-condition", #expr, __FILE__, __LINE__))
#define CHECK(expr) ((expr) ? (void)0 : OrvanexAssertFailed("Check", #expr, __FILE__, __LINE__))
#endif
