#include "export/TextureReading.h"

#include <algorithm>
#include <cstring>
#include <string>

#include <wx/filefn.h>
#include <wx/filename.h>

#include "support/Gates.h"
#include "support/Uuid.h"

namespace quellix {

namespace {

// An image representation, released with the object.
class ImageRep {
 public:
  ImageRep() { SUImageRepCreate(&su_rep); }
  ~ImageRep() {
    if (SUIsValid(su_rep)) SUImageRepRelease(&su_rep);
  }
  ImageRep(const ImageRep&) = delete;
  ImageRep& operator=(const ImageRep&) = delete;

  SUImageRepRef Ref() const { return su_rep; }
  SUImageRepRef* Out() { return &su_rep; }

  std::uint64_t BitsPerPixel() const {
    std::size_t bytes = 0;
    std::size_t bits = 0;
    SUImageRepGetDataSize(su_rep, &bytes, &bits);
    return bits;
  }

 private:
  SUImageRepRef su_rep = SU_INVALID;
};

// All pixels with `bytesPerPixel` each, rows packed; the host may pad its rows. Empty when it does
// not give them.
std::vector<std::uint8_t> PackedPixels(const ImageRep& rep, std::uint64_t width,
                                       std::uint64_t height, std::uint64_t bytesPerPixel) {
  std::vector<std::uint8_t> pixels(width * height * bytesPerPixel);
  std::size_t bytes = 0;
  std::size_t bits = 0;
  std::size_t padding = 0;
  SUImageRepGetDataSize(rep.Ref(), &bytes, &bits);
  SUImageRepGetRowPadding(rep.Ref(), &padding);
  if (padding == 0) {
    if (SUImageRepGetData(rep.Ref(), pixels.size(), pixels.data()) != SU_ERROR_NONE) return {};
    return pixels;
  }
  std::vector<std::uint8_t> padded(bytes);
  if (SUImageRepGetData(rep.Ref(), padded.size(), padded.data()) != SU_ERROR_NONE) return {};
  const std::uint64_t row = width * bytesPerPixel;
  for (std::uint64_t y = 0; y < height; ++y) {
    const std::uint64_t start = y * (row + padding);
    if (start + row > padded.size()) break;
    std::memcpy(pixels.data() + y * row, padded.data() + start, row);
  }
  return pixels;
}

// Takes size and pixels of a representation that has 24 or 32 bits a pixel; the block stays empty
// when the host does not give them.
void Take(const ImageRep& rep, RawTextureData& block) {
  std::size_t width = 0;
  std::size_t height = 0;
  SUImageRepGetPixelDimensions(rep.Ref(), &width, &height);
  block.pixels = PackedPixels(rep, width, height, block.bitsPerPixel == 24 ? 3 : 4);
  if (block.pixels.empty()) return;
  block.width = width;
  block.height = height;
}

// Of a representation of any depth: 24 bits stay, everything else becomes 32.
std::uint64_t Normalised(ImageRep& rep) {
  const std::uint64_t bits = rep.BitsPerPixel();
  if (bits == 24 || bits == 32) return bits;
  SUImageRepConvertTo32BitsPerPixel(rep.Ref());
  return 32;
}

bool ReadColorized(SUTextureRef su_texture, RawTextureData& block) {
  ImageRep rep;
  if (SUTextureGetColorizedImageRep(su_texture, rep.Out()) != SU_ERROR_NONE) return false;
  if (rep.BitsPerPixel() != 32) SUImageRepConvertTo32BitsPerPixel(rep.Ref());
  block.bitsPerPixel = 32;
  Take(rep, block);
  if (block.useAlpha) {
    ImageRep plain;
    if (SUTextureGetImageRep(su_texture, plain.Out()) == SU_ERROR_NONE) {
      if (plain.BitsPerPixel() != 32) SUImageRepConvertTo32BitsPerPixel(plain.Ref());
      block.alphaSource = PackedPixels(plain, block.width, block.height, 4);
    }
  }
  return true;
}

// What an image entity or a file holds; without pixels the block stays not valid.
bool TakeNonEmpty(ImageRep& rep, RawTextureData& block) {
  block.bitsPerPixel = Normalised(rep);
  Take(rep, block);
  block.valid = !block.pixels.empty();
  if (!block.valid) block.bitsPerPixel = 0;
  return block.valid;
}

// A file that is gone when this ends.
struct TemporaryFile {
  const wxString path;
  ~TemporaryFile() {
    if (wxFileExists(path)) wxRemoveFile(path);
  }
};

bool UsesAlpha(SUTextureRef su_texture) {
  bool use = false;
  SUTextureGetUseAlphaChannel(su_texture, &use);
  return use;
}

}  // namespace

bool ReadTexturePixels(SUTextureRef su_texture, TextureMode mode, RawTextureData& block) {
  const GateGuard gate = GateAcquire(Gate::ImageRep);
  block = RawTextureData();
  block.mode = mode;
  block.useAlpha = UsesAlpha(su_texture);
  if (mode == TextureMode::Colorized) {
    if (!ReadColorized(su_texture, block)) return false;
  } else {
    ImageRep rep;
    SUTextureGetImageRep(su_texture, rep.Out());
    if (mode == TextureMode::Channel) {
      SUImageRepConvertTo32BitsPerPixel(rep.Ref());
      block.bitsPerPixel = 32;
    } else {
      block.bitsPerPixel = Normalised(rep);
    }
    Take(rep, block);
  }
  block.valid = true;
  return true;
}

bool ReadImagePixels(SUImageRef su_image, RawTextureData& block) {
  const GateGuard gate = GateAcquire(Gate::ImageRep);
  block = RawTextureData();
  block.useAlpha = true;
  ImageRep rep;
  if (SUImageGetImageRep(su_image, rep.Out()) != SU_ERROR_NONE) return false;
  return TakeNonEmpty(rep, block);
}

bool ReadTextureViaWriter(SUTextureWriterRef su_writer, long textureId, SUTextureRef su_texture,
                          RawTextureData& block) {
  const GateGuard gate = GateAcquire(Gate::ImageRep);
  block = RawTextureData();
  block.useAlpha = SUIsValid(su_texture) && UsesAlpha(su_texture);
  const wxString name = wxString::FromUTF8(("cqlx_tw_" + MakeUuidText() + ".png").c_str());
  const TemporaryFile file{wxFileName(wxFileName::GetTempDir(), name).GetFullPath()};
  const std::string path(file.path.utf8_str());
  if (SUTextureWriterWriteTexture(su_writer, textureId, path.c_str(), false) != SU_ERROR_NONE) {
    return false;
  }
  ImageRep rep;
  return SUImageRepLoadFile(rep.Ref(), path.c_str()) == SU_ERROR_NONE && TakeNonEmpty(rep, block);
}

}  // namespace quellix
