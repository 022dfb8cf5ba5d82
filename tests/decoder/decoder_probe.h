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
    d.streamChannels = streamChannels;
    d.outputChannels = outputChannels;
    d.decimation = decimation;
    d.bytesPerSample = bytes;
    d.refMode = streamChannels == 1 ? 3 : 0;
    d.SynthesisSetup();
    std::memset(d.subbandSamples, 0, sizeof d.subbandSamples);
  }
  void SetUpLayer3(int version, int rateIndex, int mode, int modeExtension) {
    d.versionIndex = d.refVersion = version;
    d.sampleRateIndex = d.refSampleRateIndex = rateIndex;
    d.mode = mode;
    d.modeExtension = modeExtension;
    d.layerIndex = d.refLayer = 2;
    d.InitLayer3();
  }
  float* Subbands(int channel) { return d.subbandSamples[channel][0]; }
  float* Lines(int channel) { return d.spectrum[channel]; }
  void SetActive(int left, int right) {
    d.activeLines[0] = left;
    d.activeLines[1] = right;
  }
  int OutputChannels() const { return d.outputChannels; }
  bool MatrixOn() const { return d.matrixOn != 0; }
  void Synthesize(void* out) { d.SynthesizeFrame(out); }
  void Stereo(const GranuleInfo& record, const int* store) { d.StereoProcess(record, store); }
  void Enhance() { d.EnhanceTreble(); }
  void ReduceVocals() { d.ReduceVocals(); }
  void Hybrid(const GranuleInfo& record, int channel) { d.HybridSynthesis(record, channel, 0); }
  int Huffman(const unsigned char* data, GranuleInfo& record, float* values) {
    std::memcpy(d.mainData, data, sizeof d.mainData);
    d.bitBase = d.mainData;
    d.bitCursor = &d.mainDataBit;
    d.mainDataBit = 0;
    double ones[kLines / 2 + MpegDecoder::kPastEnd];
    std::fill(std::begin(ones), std::end(ones), 1.0);
    return d.ReadHuffmanData(record, ones, values);
  }
  static constexpr int kReservoir = sizeof MpegDecoder::mainData;

 private:
  MpegDecoder& d;
};

}  // namespace kwo
