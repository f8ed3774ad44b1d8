// Operations decoded from bytes, on a journal and on its model:
//     build/fuzz/tests/fuzz/operations_fuzz -len_control=0 -max_len=480 NEW_CORPUS tests/fuzz/corpus/operations
// The first corpus is written by hand, one file for each type of record. Each file is a sequence of Steps. Their
// meaning changes with the list of operations; model_test fails if the corpus no longer has every operation.

#include "support/model/steps.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>

using namespace support;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try
    {
        RunSteps(
            StepsFrom(data, std::min(size, 64 * StepBytes{}.size()))); // longer inputs are slower and find nothing more
    }
    catch (const Mismatch& mismatch)
    {
        std::cerr << mismatch.what() << '\n';
        std::abort();
    }
    return 0;
}
