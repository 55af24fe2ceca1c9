# The text form of patches is JSON.
find_package (nlohmann_json REQUIRED)
target_link_libraries (mv_engine PUBLIC nlohmann_json::nlohmann_json)
