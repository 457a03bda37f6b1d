#pragma once

struct CaInterpreter;

/// Conditions on reals. They pop their operands and push nothing; a false one skips the next
/// operator or block. With a not-a-number among the operands all are true but "=".

int Less(CaInterpreter& interpreter);            // A B <
int LessOrEqual(CaInterpreter& interpreter);     // A B <=
int Greater(CaInterpreter& interpreter);         // A B >
int GreaterOrEqual(CaInterpreter& interpreter);  // A B >=
int Equal(CaInterpreter& interpreter);           // A B =, exactly
int NotEqual(CaInterpreter& interpreter);        // A B ~=
int Near(CaInterpreter& interpreter);            // A B tolerance ==
int NotNear(CaInterpreter& interpreter);         // A B tolerance ~==
