#include "export/MaterialSending.h"

#include "export/TextureConversion.h"

namespace quellix {

namespace {

TexturePixels Pixels(const ConvertedTexture& texture) {
  return {texture.width, texture.height, texture.size, texture.bytes};
}

ChannelPixels Channel(const ConvertedTexture& texture, bool present) {
  ChannelPixels channel;
  static_cast<TexturePixels&>(channel) = Pixels(texture);
  channel.bitsPerPixel = present ? 32 : 0;
  channel.stride = texture.stride;
  return channel;
}

ConvertedTexture ConvertedWhen(bool present, const RawTextureData& block, bool exchange = false) {
  return present ? ConvertTexturePixels(block, exchange) : ConvertedTexture();
}

void SendClassic(IpcInterface& link, const MaterialSendJob& job) {
  const ConvertedTexture texture = ConvertedWhen(job.hasTexture, job.baseTexture);
  ClassicMaterialRecord record;
  record.index = job.index;
  for (int i = 0; i < 3; ++i) {
    record.ambientColor[i] = job.color[i] * 0.3f;
    record.diffuseColor[i] = job.color[i];
    record.specularColor[i] = 0.5f;
  }
  record.diffuse = job.diffuse;
  record.specular = job.specular;
  record.reflection = job.reflection;
  record.reflectionBlur = job.reflectionBlur;
  record.refraction = job.refraction;
  record.refractionBlur = job.refractionBlur;
  record.opacity = job.opacity;
  record.hasTexture = !job.textureName.empty();
  record.textureName = job.textureName.c_str();
  record.texture = Pixels(texture);
  record.bumpDepth = job.bumpDepth;
  record.lightPower = job.lightPower;
  record.hidden = job.hidden;
  record.name = job.name.c_str();
  record.materialType = job.materialType.c_str();
  record.key = job.key;
  link.AppendMaterial(record);
}

// The host's own normal map, or one made from the base texture, or none.
ConvertedTexture NormalMap(const MaterialSendJob& job, const ConvertedTexture& base,
                           PbrMaterialRecord& record) {
  record.normalScale = job.normalScale;
  record.hasNormalTexture = job.hasNormalTexture;
  if (job.hasNormalTexture) return ConvertTexturePixels(job.normalTexture, true);
  ConvertedTexture normal;
  if (!job.bumpFromBase || base.bytes == nullptr) return normal;
  normal.width = base.width;
  normal.height = base.height;
  normal.stride = base.stride;
  normal.size = base.size;
  normal.storage = MakeNormalMapFromBase(base, job.bumpDepth);
  normal.bytes = normal.storage.Data();
  record.normalScale = 1.0f;
  record.hasNormalTexture = true;
  return normal;
}

void SendPbr(IpcInterface& link, const MaterialSendJob& job) {
  const ConvertedTexture base = ConvertedWhen(job.hasBaseTexture, job.baseTexture);
  const ConvertedTexture metallic = ConvertedWhen(job.hasMetallicTexture, job.metallicTexture);
  const ConvertedTexture roughness = ConvertedWhen(job.hasRoughnessTexture, job.roughnessTexture);
  PbrMaterialRecord record;
  const ConvertedTexture normal = NormalMap(job, base, record);
  record.index = job.index;
  record.name = job.name.c_str();
  for (int i = 0; i < 3; ++i) record.baseColor[i] = job.baseColor[i];
  record.hasBaseTexture = job.hasBaseTexture;
  record.baseTexture = Pixels(base);
  record.metallic = job.metallic;
  record.hasMetallicTexture = job.hasMetallicTexture;
  record.metallicTexture = Channel(metallic, job.hasMetallicTexture);
  record.roughness = job.roughness;
  record.hasRoughnessTexture = job.hasRoughnessTexture;
  record.roughnessTexture = Channel(roughness, job.hasRoughnessTexture);
  record.normalTexture = Channel(normal, record.hasNormalTexture);
  record.transparency = job.transparency;
  record.refraction = job.refraction;
  record.lightPower = job.lightPower;
  record.hidden = job.hidden;
  record.materialType = job.materialType.c_str();
  record.key = job.key;
  link.AppendPBRMaterial(record);
}

}  // namespace

void SendMaterialJob(IpcInterface& link, const MaterialSendJob& job) {
  if (job.isPbr) {
    SendPbr(link, job);
  } else {
    SendClassic(link, job);
  }
}

}  // namespace quellix
