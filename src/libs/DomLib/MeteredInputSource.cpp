#include "libs/DomLib/MeteredInputSource.h"

#include <stdexcept>

namespace DomLib {

using namespace xercesc;

namespace {

class MeteredStream : public BinInputStream {
 public:
  MeteredStream(BinInputStream& content, ParseMeter& meter) : content_(content), meter_(meter) {}

  [[nodiscard]] XMLFilePos curPos() const override { return content_.curPos(); }
  [[nodiscard]] const XMLCh* getContentType() const override { return content_.getContentType(); }

  XMLSize_t readBytes(XMLByte* bytes, XMLSize_t maximum) override {
    if (meter_.blocksSinceLook > kMaximumBlocksOfTag) {
      meter_.running = false;
      throw std::runtime_error("the document has too large a tag or declaration");
    }
    return content_.readBytes(bytes, maximum);
  }

 private:
  BinInputStream& content_;
  ParseMeter& meter_;
};

}  // namespace

MeteredInputSource::MeteredInputSource(const InputSource& document, ParseMeter& meter, MemoryManager& memory)
    : InputSource(document.getSystemId(), document.getPublicId(), &memory),
      content_(document.makeStream()),
      meter_(meter) {
  setEncoding(document.getEncoding());
}

BinInputStream* MeteredInputSource::makeStream() const {
  return new (getMemoryManager()) MeteredStream(*content_, meter_);
}

}  // namespace DomLib
