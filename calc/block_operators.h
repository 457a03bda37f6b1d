#pragma once

struct CaInterpreter;

/// The limits of blocks. They run while tokens are skipped, too, and matter only then; they have
/// no operands and never fail.

int OpenBlock(CaInterpreter& interpreter);       // {
int CloseBlock(CaInterpreter& interpreter);      // }
int CloseAllBlocks(CaInterpreter& interpreter);  // }}
