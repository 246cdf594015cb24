#pragma once

#include <GenApi/Container.h>
#include <GenApi/IValue.h>

namespace GenApi
{
/**
 * \brief A group of features; ToString() gives the category's name.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT ICategory : virtual public IValue
{
    /// The features in description order.
    virtual void GetFeatures(FeatureList_t& features) const = 0;
};
} // namespace GenApi
