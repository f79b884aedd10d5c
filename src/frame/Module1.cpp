#include "frame/Module1.h"

namespace Module1 {

void resetState() {
    SymbolEntries.clear();
    SymbolCount = 0;
    SelectedSymbols.clear();
    NewSymbol.clear();
    LastFolder.clear();
    DownloadItems.clear();
    Quotes.clear();
}

} // namespace Module1
