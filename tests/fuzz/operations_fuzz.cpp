// Operations decoded from bytes, on a journal and on the model of it:
//     build/fuzz/tests/fuzz/operations_fuzz -len_control=0 -max_len=480 NEW_CORPUS tests/fuzz/corpus/operations
// The corpus that it starts with is written by hand, a file for each part of a journal: Steps one after the other. They
// mean something else as soon as there is an operation more; model_test tells when one does not come up any longer.

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
        RunSteps(StepsFrom(data, std::min(size, 64 * Step{}.size()))); // longer ones find nothing more, only slower
    }
    catch (const Mismatch& mismatch)
    {
        std::cerr << mismatch.what() << '\n';
        std::abort();
    }
    return 0;
}
