#pragma once

#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief An integer feature with range and increment.
 *
 * Thread: any; each call locks the node map's lock.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IInteger : virtual public IValue
{
    /**
     * \brief Writes the value.
     * \param[in] value  New value.
     * \param[in] verify Check availability, lock, range and increment first.
     * \throws AccessException when not writable, OutOfRangeException when out of range (verify).
     */
    virtual void SetValue(int64_t value, bool verify = true) = 0;
    /// Writes the value with verification.
    virtual IInteger& operator=(int64_t value) = 0;
    /**
     * \brief Reads the value.
     * \param[in] verify      Bypass the cache and check the value read against the range.
     * \param[in] ignoreCache Bypass the cache.
     * \throws AccessException when not readable.
     */
    virtual int64_t GetValue(bool verify = false, bool ignoreCache = false) = 0;
    /// The value (unverified, cached).
    virtual int64_t operator()() = 0;
    /// The value (unverified, cached).
    virtual int64_t operator*() = 0;
    /// Smallest allowed value. \throws AccessException when not available.
    virtual int64_t GetMin() = 0;
    /// Largest allowed value. \throws AccessException when not available.
    virtual int64_t GetMax() = 0;
    /// Whether values are spaced by an increment or listed.
    virtual EIncMode GetIncMode() = 0;
    /// Spacing of allowed values (1 for listed values).
    virtual int64_t GetInc() = 0;
    /// Listed values (within [Min, Max] when \a bounded); empty unless GetIncMode() is listIncrement.
    virtual int64_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    /// Recommended representation.
    virtual ERepresentation GetRepresentation() = 0;
    /// Physical unit.
    virtual GenICam::gcstring GetUnit() = 0;
    /// Narrows the range from below.
    virtual void ImposeMin(int64_t value) = 0;
    /// Narrows the range from above.
    virtual void ImposeMax(int64_t value) = 0;
};
} // namespace GenApi
