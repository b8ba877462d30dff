#include "Zip.h"

#include <zip.h>

#include <memory>

#include "vq/sim/Profile.h"

namespace vq::sim {

namespace {

struct SourceCloser {
  void operator()(zip_source_t* source) const { zip_source_free(source); }
};

[[noreturn]] void fail(const std::string& what, zip_error_t* error) {
  const std::string text = error ? zip_error_strerror(error) : "unknown error";
  throw ProfileError("cannot zip the description: " + what + ": " + text);
}

std::vector<uint8_t> readBack(zip_source_t* source) {
  if (zip_source_open(source) < 0) fail("reopen", zip_source_error(source));
  zip_stat_t stat;
  zip_stat_init(&stat);
  if (zip_source_stat(source, &stat) < 0 || (stat.valid & ZIP_STAT_SIZE) == 0) {
    zip_source_close(source);
    fail("stat", zip_source_error(source));
  }
  std::vector<uint8_t> bytes(stat.size);
  const zip_int64_t got = zip_source_read(source, bytes.data(), bytes.size());
  zip_source_close(source);
  if (got < 0 || static_cast<zip_uint64_t>(got) != stat.size)
    fail("read", zip_source_error(source));
  return bytes;
}

}  // namespace

std::vector<uint8_t> zipSingleFile(const std::string& fileName, const std::string& content) {
  zip_error_t error;
  zip_error_init(&error);
  std::unique_ptr<zip_source_t, SourceCloser> archiveSource(
      zip_source_buffer_create(nullptr, 0, 0, &error));
  if (!archiveSource) fail("buffer", &error);
  zip_source_keep(archiveSource.get());  // survive zip_close so the bytes can be read back
  zip_t* archive = zip_open_from_source(archiveSource.get(), ZIP_TRUNCATE, &error);
  if (!archive) {
    zip_source_free(archiveSource.get());  // drop the extra reference taken above
    fail("open", &error);
  }
  zip_source_t* file = zip_source_buffer(archive, content.data(), content.size(), 0);
  const zip_int64_t index =
      file ? zip_file_add(archive, fileName.c_str(), file, ZIP_FL_ENC_UTF_8) : -1;
  if (index < 0) {
    if (file) zip_source_free(file);
    const std::string text = zip_error_strerror(zip_get_error(archive));
    zip_discard(archive);
    throw ProfileError("cannot zip the description: add: " + text);
  }
  zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_DEFLATE, 9);
  if (zip_close(archive) < 0) {
    const std::string text = zip_error_strerror(zip_get_error(archive));
    zip_discard(archive);
    throw ProfileError("cannot zip the description: close: " + text);
  }
  return readBack(archiveSource.get());
}

}  // namespace vq::sim
