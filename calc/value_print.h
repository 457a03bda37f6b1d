#pragma once

#include <cstdio>

class CaValue;

/// Writes one blank, the value in the notation that the reader takes, and a newline; nothing for
/// a value of type nothing or of an unknown type. Reals have six decimals, the elements of a
/// matrix three in columns of ten.
void PrintValue(std::FILE* stream, const CaValue& value);
