#pragma once
// The JSON inventory (-outf=JSON): every value a string, the keys as the
// collector spells them; anything else is refused with its JSON path.
#include <string>

#include "audit/DocumentReader.h"

namespace audit {

// The whole document; each component goes to sink, the host's fields to
// inventory. On failure: false, error names the file and the place.
bool ParseJsonInventory(const std::string& bytes, const std::string& name, Inventory& inventory,
                        const ComponentSink& sink, std::string& error);

}  // namespace audit
