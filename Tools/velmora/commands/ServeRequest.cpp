#include "commands/ServeRequest.h"

#include "output/Escapes.h"

const char* ParseServeRequest(const std::string& line, tServeRequest& request)
{
    const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
    if (!json.is_object()) {
        return "the line is no JSON object";
    }
    if (json.contains("id")) {
        if (!json["id"].is_string() && !json["id"].is_number()) {
            return "\"id\" must be a string or a number";
        }
        request.id = json["id"];
    }
    const bool encoded = json.contains("path_base64");
    const char* member = encoded ? "path_base64" : "path";
    if (!json.contains(member) || !json[member].is_string()) {
        return "there is no \"path\", or it is no string";
    }
    const std::string text = json[member].get<std::string>();
    if (!encoded) {
        request.path = text;
    } else if (!Escapes::FromBase64(text, request.path)) {
        return "\"path_base64\" is not in base 64";
    }
    return nullptr;
}
