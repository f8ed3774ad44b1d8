#pragma once

namespace CLI
{
class App;
}

class Session;

// Makes `note PLANT... TEXT` add a journal entry to one or several plants. The names of the group's commands prevail:
// `note list` lists the entries, also where a plant is named list.
void AddNoteShortcut(CLI::App& noteGroup, Session& session);
