#pragma once

namespace GenApi
{
/// A converter's Min and Max (two formula evaluations over pValue's range), kept until an
/// invalidation reaches the node. Guarded by the node map's lock.
template <class T>
class CCachedRange
{
public:
    void Drop() { m_valid = false; }

    /// The kept range, or \a compute(minimum, maximum)'s, kept when \a cacheable() says so then.
    template <class Compute, class Cacheable>
    void Get(T& minimum, T& maximum, Compute&& compute, Cacheable&& cacheable)
    {
        if (m_valid)
        {
            minimum = m_minimum, maximum = m_maximum;
            return;
        }
        compute(minimum, maximum);
        if (cacheable())
        {
            m_minimum = minimum, m_maximum = maximum;
            m_valid = true;
        }
    }

private:
    T m_minimum{};
    T m_maximum{};
    bool m_valid = false;
};
} // namespace GenApi
