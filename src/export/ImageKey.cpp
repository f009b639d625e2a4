#include "export/ImageKey.h"

#include "export/Lists.h"

namespace quellix {

std::uint32_t ImageKey(SUImageRef su_image) {
  SUComponentDefinitionRef su_definition = SU_INVALID;
  std::uint64_t id = 0;
  if (SUImageGetDefinition(su_image, &su_definition) == SU_ERROR_NONE) id = IdOf(su_definition);
  return static_cast<std::uint32_t>(id != 0 ? id : IdOf(su_image));
}

}  // namespace quellix
