#include "tavolin/model/field_argument.h"

#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"

namespace tavolin {

int CheckedByte(int number) {
    if (number < 0 || number > 255) RaiseRunTime(kOverflow);
    return number;
}

int CheckedField(int number, const char* source) {
    if (CheckedByte(number) >= kFieldCount) {
        Raise(CVLErrorNum::GetFieldOutOfRangeError(), source,
              Message("Field Is Out Of Range(0-9)"));
    }
    return number;
}

}  // namespace tavolin
