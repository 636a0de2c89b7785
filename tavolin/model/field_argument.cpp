#include "tavolin/model/field_argument.h"

#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"

namespace tavolin {

void RefuseField(const char* source) {
    Raise(CVLErrorNum::GetFieldOutOfRangeError(), source, Message("Field Is Out Of Range(0-9)"));
}

}  // namespace tavolin
