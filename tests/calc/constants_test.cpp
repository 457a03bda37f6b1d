// Compound constants: what is accepted, and where reading goes on after a malformed one.

#include <gtest/gtest.h>

#include "calc_harness.h"

namespace {

constexpr Program WellFormed[] = {
    {"v(1,2,3) # ", " v(1.000000, 2.000000, 3.000000)\n", ""},
    {"p(1 2 3) # ", " p(1.000000, 2.000000, 3.000000)\n", ""},
    {"s( 1 , 2 , 3 , ) # ", " s(1.000000, 2.000000, 3.000000)\n", ""},
    {"v([x] 1, [y]2\n,3[z]) # ", " v(1.000000, 2.000000, 3.000000)\n", ""},
    {"v(-1, +2, 3e1) # ", " v(-1.000000, 2.000000, 30.000000)\n", ""},
    {"v(-0, +.5, -1.e-1) # ", " v(-0.000000, 0.500000, -0.100000)\n", ""},
    {"v(1-2+3) # ", " v(1.000000, -2.000000, 3.000000)\n", ""},
    {"v(1e999, -1e999, 1e-999) # ", " v(inf, -inf, 0.000000)\n", ""},
    {"q(2, 0, 0, 0) # ", " q(2.000000,   0.000000, 0.000000, 0.000000)\n", ""},
    {"r(0, 0, 2, 450) # ", " r(0.000000, 0.000000, 2.000000,   450.000000)\n", ""},
    {"m(1,2,3,4, 5,6,7,8, 9,10,11,12) # ",
     " m(     1.000,     2.000,     3.000,     4.000\n        5.000,     6.000,     7.000,     8.000"
     "\n        9.000,    10.000,    11.000,    12.000)\n",
     ""},
    {"m(123456789.9996 -0.0004 0 0 0 0 0 0 0 0 0 -1e999) # ",
     " m(123456790.000,    -0.000,     0.000,     0.000\n        0.000,     0.000,     0.000,"
     "     0.000\n        0.000,     0.000,     0.000,      -inf)\n",
     ""},
    // The matrix prints as it is written, so it comes back through its own format.
    {"m(     1.000,     0.000,     0.000,     5.000\n        0.000,     1.000,     0.000,     6.000"
     "\n        0.000,     0.000,     1.000,     7.000) p(1, 1, 1) * # ",
     " p(6.000000, 7.000000, 8.000000)\n", ""},
};

constexpr Program Malformed[] = {
    {"v(1, 2) 5 ## ", " 5.000000\n", "Problem in format of compound constant v\n"},
    {"v(1, 2, 3, 4) ## ", " 4.000000\n", "Problem in format of compound constant v\n"},
    {"7 a : v(1, a, 3) ## ", " 7.000000\n 3.000000\n",
     "Problem in format of compound constant v\n"},
    {"v(1 - 2, 3, 4) ## ", " 3.000000\n 4.000000\n", "Problem in format of compound constant v\n"},
    {"v(1e, 2, 3) ## ", "", "Problem in format of compound constant v\n"},
    {"v((1,2,3) ## ", " 1.000000\n 2.000000\n 3.000000\n",
     "Problem in format of compound constant v\n"},
    {"v(inf, nan, 1) ## ", " 1.000000\n", "Problem in format of compound constant v\n"},
    {"v(0x1, 2, 3) ## ", " 2.000000\n 3.000000\n", "Problem in format of compound constant v\n"},
    {"v(1, 2, 3# ## ", "", "Problem in format of compound constant v\n"},
    {"m(1 2 3 4 5 6 7 8 9 10 11) ## ", "", "Problem in format of compound constant m\n"},
    {"p() q() r() s() ", "",
     "Problem in format of compound constant p\nProblem in format of compound constant q\n"
     "Problem in format of compound constant r\nProblem in format of compound constant s\n"},
    {"V(1, 2, 3) ## ", " 1.000000\n 2.000000\n 3.000000\n",
     "\nUnrecognized constant specifier V\n"},
    {"vv(1) ## ", " 1.000000\n", "\nUnrecognized constant specifier vv\n"},
    {"6 v : v (1) ## ", " 6.000000\n 1.000000\n", ""},
    {"6 v : v[x](1) ## ", " 6.000000\n 1.000000\n", ""},
};

TEST(Constants, WellFormed) { RunPrograms(WellFormed); }
TEST(Constants, Malformed) { RunPrograms(Malformed); }

}  // namespace
