// The card photo on disk: the ".wlt" data go to a working file beside the photo
// path, the outside photo component decodes it to a ".bmp", which is moved to the path.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qz::identity {

// The photo component: loaded by this name, then from the library's own folder.
inline constexpr std::string_view photo_library = "GetInfo.dll";

// Runs GetBmp(wlt_path, 2) of the photo component: its value, or 0 when the
// component or its entry cannot be found.
int DecodeWltFile(const std::string& wlt_path, std::string_view library = photo_library);

// Writes `photo` to "sfz.wlt" in the folder of `photo_path` (made if missing),
// decodes it to "sfz.bmp" there and moves that to `photo_path`. Result: 0 when the
// ".bmp" was made; else GetBmp's value less 2 for values -6 to 0, -110 for others.
int SavePhotoFile(std::span<const std::uint8_t> photo, const std::string& photo_path,
                  std::string_view library = photo_library);

}  // namespace qz::identity
