#include "space/SpaceJsonWriter.h"

#include <stdexcept>

namespace corvel {

void SpaceJsonWriter::beginNode(const SpaceNode& node) {
    if (!started_) {
        out_ << "{\"tree\":";
        started_ = true;
    } else if (hasChildren_.empty()) {
        throw std::logic_error("SpaceJsonWriter: a second root node");
    }
    if (!hasChildren_.empty()) {
        if (hasChildren_.back()) out_ << ',';
        hasChildren_.back() = true;
    }
    Json fields = node;
    fields.erase("children");
    std::string text = fields.dump(-1, ' ', false, Json::error_handler_t::replace);
    text.pop_back();  // the closing brace: children follow
    out_ << text << ",\"children\":[";
    hasChildren_.push_back(false);
}

void SpaceJsonWriter::endNode() {
    if (hasChildren_.empty()) throw std::logic_error("SpaceJsonWriter: endNode without beginNode");
    hasChildren_.pop_back();
    out_ << "]}";
}

void SpaceJsonWriter::finish(const SpaceScanReport& report) {
    if (!started_) {
        out_ << "{\"tree\":null";
        started_ = true;
    }
    const Json document = report;
    out_ << ",\"report\":" << document.dump(-1, ' ', false, Json::error_handler_t::replace) << "}\n";
    out_.flush();
}

}  // namespace corvel
