#pragma once

#include "automation/type_info_holder.h"

namespace AUX {

/// What typed calls have asked the type information for.
struct TypeInfoHolder::Cache {
    IdMap<FUNCDESC*> functions[4];  // by kind: method, get, put, put of a reference
    IdMap<ResolvedType> types;      // by HREFTYPE
};

}  // namespace AUX
