#pragma once

#include <vector>

#include <GenApi/Types.h>

namespace GenApi
{
struct INode;
struct IValue;

/// A list of nodes.
class node_vector : public std::vector<INode*>
{
public:
    using std::vector<INode*>::vector;
};

/// A list of values (the features of a category, the selected features of a selector).
class value_vector : public std::vector<IValue*>
{
public:
    using std::vector<IValue*>::vector;
};

typedef node_vector NodeList_t;
typedef value_vector FeatureList_t;
} // namespace GenApi
