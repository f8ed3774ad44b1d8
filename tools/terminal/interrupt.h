#pragma once

// Throws Refusal if Ctrl-C was pressed.
void StopIfInterrupted();
