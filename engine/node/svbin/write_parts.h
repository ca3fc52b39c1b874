/// The writers of the tables of a svbin file.
#pragma once

#include <string_view>

#include "engine/node/encoding/material_names.h"
#include "engine/node/node_class.h"
#include "engine/node/svbin/file_builder.h"

namespace nemra::node::svbin {

Offset<fb::Value> writeValue(FileBuilder& file, const Value& value);
/// `family` is empty where the place tells it.
Offset<fb::Node> writeNode(FileBuilder& file, const Node& node, std::string_view family);
Offset<fb::Geometry> writeGeometry(FileBuilder& file, const Geometry& geometry, const MaterialNames& names);
Offset<fb::Instance> writeInstance(FileBuilder& file, const Instance& instance, const MaterialNames& names);

}  // namespace nemra::node::svbin
