#pragma once
// The state of one run of the program, in two parts: what several screens share for the whole
// run, and what one screen hands over to the next (the caller writes it, shows the screen, and
// reads it back when the screen has closed). A modal dialog is what keeps two screens from using
// them at once.
//
// The program makes one ProgramState at start; making one installs it, and sharedState() and
// handOvers() reach the newest one that lives. Without any, they reach a state of their own, so a
// tool that never asks for one still works.

#include "frame/GrowingArray.h"
#include "frame/Records.h"

#include <QString>

struct SharedState {
    GrowingArray<SymbolEntry> SymbolEntries;   // the lines of symbols.csv, 1..SymbolCount
    qint32 SymbolCount = 0;
    QString LastFolder;                        // the folder most recently chosen by browsing
};

struct HandOvers {
    GrowingArray<QString> SelectedSymbols;     // picked in Symbol Lookup
    QString NewSymbol;                         // typed in New Symbol
    GrowingArray<DownloadItem> DownloadItems;  // the securities of one download run
    GrowingArray<QuoteRecord> Quotes;          // the parsed reply of the last fetch
};

class ProgramState {
public:
    ProgramState();
    ~ProgramState();
    ProgramState(const ProgramState&) = delete;
    ProgramState& operator=(const ProgramState&) = delete;

    SharedState shared;
    HandOvers handOvers;

private:
    ProgramState* previous_;
};

SharedState& sharedState();
HandOvers& handOvers();
