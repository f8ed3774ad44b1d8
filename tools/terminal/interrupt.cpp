#include "terminal/interrupt.h"

#include "refusal.h"
#include "terminal/console.h"

void StopIfInterrupted()
{
    if (Interrupted())
        throw Refusal("interrupted; nothing was changed; run the command again");
}
