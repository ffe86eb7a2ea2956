// An array that objects share because a file holds it many times alike: the key times of a baked
// clip's curves are most of what such a file holds. Null or empty where there are no elements.
#pragma once

#include <memory>
#include <utility>
#include <vector>

template <typename T>
using FbxSharedArray = std::shared_ptr<const std::vector<T>>;

template <typename T>
FbxSharedArray<T> ShareArray(std::vector<T> elements) {
  return std::make_shared<const std::vector<T>>(std::move(elements));
}
