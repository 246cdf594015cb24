#pragma once

#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief A floating-point feature with range, unit and display hints.
 *
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IFloat : virtual public IValue
{
    /**
     * \brief Writes the value.
     * \throws AccessException when not writable, OutOfRangeException when out of range (verify).
     */
    virtual void SetValue(double value, bool verify = true) = 0;
    /// Writes the value with verification.
    virtual IFloat& operator=(double value) = 0;
    /// Reads the value; \a verify also bypasses the cache and checks the range.
    virtual double GetValue(bool verify = false, bool ignoreCache = false) = 0;
    /// The value (unverified, cached).
    virtual double operator()() = 0;
    /// The value (unverified, cached).
    virtual double operator*() = 0;
    /// Smallest allowed value.
    virtual double GetMin() = 0;
    /// Largest allowed value.
    virtual double GetMax() = 0;
    /// Whether the feature has an increment.
    virtual bool HasInc() = 0;
    /// Increment mode.
    virtual EIncMode GetIncMode() = 0;
    /// The increment (only meaningful when HasInc()).
    virtual double GetInc() = 0;
    /// Listed values, when the increment mode is listIncrement.
    virtual double_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    /// Recommended representation.
    virtual ERepresentation GetRepresentation() = 0;
    /// Physical unit.
    virtual GenICam::gcstring GetUnit() const = 0;
    /// Notation used by ToString.
    virtual EDisplayNotation GetDisplayNotation() const = 0;
    /// Precision used by ToString.
    virtual int64_t GetDisplayPrecision() const = 0;
    /// Narrows the range from below.
    virtual void ImposeMin(double value) = 0;
    /// Narrows the range from above.
    virtual void ImposeMax(double value) = 0;
};
} // namespace GenApi
