#pragma once

#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief One value of an enumeration.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IEnumEntry : virtual public IValue
{
    /// The integer value.
    virtual int64_t GetValue() = 0;
    /// The symbolic name.
    virtual GenICam::gcstring GetSymbolic() const = 0;
    /// The numeric value (the integer value when the description gives none).
    virtual double GetNumericValue() = 0;
    /// Whether the device resets the enumeration after this entry was written.
    virtual bool IsSelfClearing() = 0;
};
} // namespace GenApi
