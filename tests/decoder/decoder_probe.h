#pragma once

#include <cstring>

#include "decoder/layer3_tables.h"
#include "decoder/mpeg_decoder.h"

namespace kwo {

/// Reaches single stages of a decoder that has no stream.
class DecoderProbe {
 public:
  explicit DecoderProbe(MpegDecoder& decoder) : d(decoder) {}

  void SetUpSynthesis(int streamChannels, int outputChannels, int decimation, int bytes = 4) {
    d.output_.streamChannels = streamChannels;
    d.output_.outputChannels = outputChannels;
    d.output_.decimation = decimation;
    d.output_.bytesPerSample = bytes;
    d.first_.refMode = streamChannels == 1 ? 3 : 0;
    d.SynthesisSetup();
    std::memset(d.subbandSamples, 0, sizeof d.subbandSamples);
  }
  void SetUpLayer3(int version, int rateIndex, int mode, int modeExtension) {
    d.frame_.versionIndex = d.first_.refVersion = version;
    d.frame_.sampleRateIndex = d.first_.refSampleRateIndex = rateIndex;
    d.frame_.mode = mode;
    d.frame_.modeExtension = modeExtension;
    d.frame_.layerIndex = d.first_.refLayer = 2;
    d.InitLayer3();
  }
  float* Subbands(int channel) { return d.subbandSamples[channel][0]; }
  float* Lines(int channel) { return d.spectrum[channel]; }
  void SetActive(int left, int right) {
    d.layer3_.activeLines[0] = left;
    d.layer3_.activeLines[1] = right;
  }
  int OutputChannels() const { return d.output_.outputChannels; }
  bool MatrixOn() const { return d.output_.matrixOn != 0; }
  void Synthesize(void* out) { d.SynthesizeFrame(out); }
  void Stereo(const GranuleInfo& record, const int* store) { d.StereoProcess(record, store); }
  void Enhance() { d.EnhanceTreble(); }
  void ReduceVocals() { d.ReduceVocals(); }
  void Hybrid(const GranuleInfo& record, int channel) { d.HybridSynthesis(record, channel, 0); }
  int Huffman(const unsigned char* data, GranuleInfo& record, float* values) {
    std::memcpy(d.mainData, data, sizeof d.mainData);
    d.bits_.bitBase = d.mainData;
    d.bits_.bitCursor = &d.layer3_.mainDataBit;
    d.layer3_.mainDataBit = 0;
    double ones[kLines / 2 + MpegDecoder::kPastEnd];
    std::fill(std::begin(ones), std::end(ones), 1.0);
    return d.ReadHuffmanData(record, ones, values);
  }
  static constexpr int kReservoir = sizeof MpegDecoder::mainData;

 private:
  MpegDecoder& d;
};

}  // namespace kwo
