/// The readers of the tables of a svbin file. All throw a Fault for what is broken.
#pragma once

#include <memory>

#include "engine/node/node_class.h"
#include "engine/node/scene.h"
#include "engine/node/svbin/file_view.h"

namespace nemra::node::svbin {

Value readValue(FileView& file, const fb::Value* value);
/// A table with the columns of that description.
std::shared_ptr<const Table> readTable(FileView& file, const fb::TableData& table, const ParameterSpec& spec,
                                       const std::string& what);
/// `family` is empty where the table says it. Null for an unknown class that was skipped.
std::shared_ptr<Node> readNode(FileView& file, const fb::Node& node, std::string_view family);
std::shared_ptr<Geometry> readGeometry(FileView& file, const fb::Geometry& geometry);
std::shared_ptr<Instance> readInstance(FileView& file, const fb::Instance& instance);
Scene readScene(FileView& file, const fb::Scene& scene);

}  // namespace nemra::node::svbin
