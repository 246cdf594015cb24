#pragma once

#include <GenApi/Container.h>
#include <GenApi/IBase.h>

namespace GenApi
{
/**
 * \brief Selector relations of a node (pSelected).
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT ISelector : virtual public IBase
{
    /// Whether the node selects other features.
    virtual bool IsSelector() const = 0;
    /// The features this node selects.
    virtual void GetSelectedFeatures(FeatureList_t& features) const = 0;
    /// The features that select this node.
    virtual void GetSelectingFeatures(FeatureList_t& features) const = 0;
};
} // namespace GenApi
