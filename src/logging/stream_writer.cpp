#include <qz/logging/stream_writer.h>

TStreamWriter::~TStreamWriter() = default;
