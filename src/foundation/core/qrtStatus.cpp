#include "foundation/core/qrtStatus.h"

#include <string>

namespace QRT_0_81 {

namespace {

char const* phrase(Status::Type type) {
    switch (type) {
        case Status::ok: return "success";
        case Status::general_failure: return "general failure";
        case Status::invalid_argument: return "invalid argument";
        case Status::invalid_query: return "invalid query";
        case Status::not_initialized: return "not initialized";
        case Status::already_producing: return "already producing";
        case Status::out_of_range: return "frame out of range";
        case Status::invalid_play_params: return "invalid play parameters";
        case Status::no_resource: return "no pooled resource is free";
        case Status::invalid_pool_configuration: return "video format not supported by the resource pool";
        case Status::no_composition: return "no composition";
        case Status::composition_incomplete: return "composition adopted although parts of it cannot be rendered";
        case Status::not_producing: return "not producing";
        case Status::already_initialized: return "already initialized";
        case Status::no_composition_to_update: return "no composition to update";
        case Status::graphics_failure: return "graphics failure during read-back";
        case Status::not_while_producing: return "not allowed while producing";
        case Status::invalid_text: return "text is not valid";
        case Status::not_in_cache: return "not in the cache";
    }
    return nullptr;
}

}  // namespace

String Status::toString() const {
    if (char const* known = phrase(m_type)) return String(known);
    return String(("unknown status " + std::to_string(static_cast<int>(m_type))).c_str());
}

}  // namespace QRT_0_81
