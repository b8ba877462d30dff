#include "ZipWriter.h"

#include <zlib.h>

#include <stdexcept>

namespace genapi_test {

namespace {
void Put16(std::vector<uint8_t>& out, uint32_t v) {
  out.push_back(uint8_t(v));
  out.push_back(uint8_t(v >> 8));
}
void Put32(std::vector<uint8_t>& out, uint32_t v) {
  Put16(out, v & 0xffff);
  Put16(out, v >> 16);
}

std::string RawDeflate(const std::string& in) {
  z_stream z{};
  if (deflateInit2(&z, Z_BEST_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::runtime_error("deflateInit2");
  std::string out(deflateBound(&z, in.size()), '\0');
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
  z.avail_in = static_cast<uInt>(in.size());
  z.next_out = reinterpret_cast<Bytef*>(&out[0]);
  z.avail_out = static_cast<uInt>(out.size());
  if (deflate(&z, Z_FINISH) != Z_STREAM_END) throw std::runtime_error("deflate");
  out.resize(z.total_out);
  deflateEnd(&z);
  return out;
}
}  // namespace

std::vector<uint8_t> MakeZip(const std::string& fileName, const std::string& content,
                             bool deflate) {
  const uint32_t crc = static_cast<uint32_t>(
      crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size())));
  const std::string body = deflate ? RawDeflate(content) : content;
  const uint16_t method = deflate ? 8 : 0;
  std::vector<uint8_t> zip;
  // From the version needed to extract through the name's length, both headers agree.
  const auto shared = [&] {
    for (uint32_t field : {20u, 0u, uint32_t(method), 0u, 0x21u}) Put16(zip, field);
    for (uint32_t field : {crc, uint32_t(body.size()), uint32_t(content.size())}) Put32(zip, field);
    Put16(zip, uint16_t(fileName.size()));
  };
  Put32(zip, 0x04034b50);  // local file header
  shared();
  Put16(zip, 0);  // extra field length
  zip.insert(zip.end(), fileName.begin(), fileName.end());
  zip.insert(zip.end(), body.begin(), body.end());
  const uint32_t central = uint32_t(zip.size());
  Put32(zip, 0x02014b50);  // central directory entry
  Put16(zip, 20);          // version made by
  shared();
  for (int field = 0; field < 4; ++field) Put16(zip, 0);  // extra, comment, disk, attributes
  Put32(zip, 0);                                          // external attributes
  Put32(zip, 0);                                          // offset of the local header
  zip.insert(zip.end(), fileName.begin(), fileName.end());
  const uint32_t centralSize = uint32_t(zip.size()) - central;
  Put32(zip, 0x06054b50);  // end of central directory
  for (uint32_t field : {0u, 0u, 1u, 1u}) Put16(zip, field);
  Put32(zip, centralSize);
  Put32(zip, central);
  Put16(zip, 0);
  return zip;
}

}  // namespace genapi_test
