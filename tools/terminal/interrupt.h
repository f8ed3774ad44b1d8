#pragma once

// Records Ctrl-C from now on instead of ending the process. Long work checks for it and ends cleanly.
void CatchInterrupts();

// Whether Ctrl-C was pressed.
bool Interrupted();

// Throws Refusal if Ctrl-C was pressed.
void StopIfInterrupted();
