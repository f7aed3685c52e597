#include "cab/compiled_template.h"

namespace AUX::CAB {

WStringView CompiledTemplate::Intern(WStringView text) { return *strings.emplace(text).first; }

SpecSet& CompiledTemplate::AddAnonymousSet() { return anonymousSets.emplace_back(); }

}  // namespace AUX::CAB
