#pragma once

#include <cstdint>

#include "base/shared.h"
#include "decoder/frame_header.h"
#include "decoder/input_stream.h"
#include "decoder/kernels.h"
#include "decoder/xing_header.h"

namespace kwo {

struct QuantClass;
struct AllocationTable;

constexpr int kSubbands = 32;
constexpr int kLines = 576;
constexpr int kFrameSamples = 1152;  ///< per channel in a decoder frame, whatever the layer
constexpr int kFrameSlots = 36;

/// What the first header says.
struct StreamInfo {
  int mpegVersion = 0;  ///< 1 for MPEG-1, 2 otherwise
  int layerNumber = 0;  ///< 1 to 3
  int bitRate = 0;      ///< bits per second
  int channelCount = 0;
  int sampleRateHz = 0;
};

/// Side information of one granule and channel, ISO/IEC 11172-3 clause 2.4.1.7.
struct GranuleInfo {
  int granule;
  int channel;
  int blockType;   ///< a BlockType; BLOCK_NORMAL when the window switching flag is clear
  int mixedBlock;  ///< 0 when the window switching flag is clear
  int part2Start;  ///< bit position in `mainData`
  int tableSelect[3];
  int count1Table;    ///< 32 for quad table A, 33 for quad table B
  int region0End;     ///< first line of region 1
  int region1End;     ///< first line of region 2
  int bigValueLines;  ///< at most 576
  int part23End;      ///< bit position in `mainData`
  int subblockGain[3];
  int preflag;
  int scalefacScale;
  int globalGain;
  int scalefacCompress;
  int scfsi[4];
  int intensityScale;  ///< row of the intensity ratios: 0 or 1 for LSF, 2 otherwise
};

/// Turns a stream of MPEG audio into PCM: it is itself a stream, whose positions and lengths count
/// PCM bytes.  MPEG-1 and MPEG-2 Layers I to III and MPEG-2.5 Layer III, at every rate but free
/// format.
///
/// The work goes in decoder frames of 1,152 samples a channel.  Nothing is allocated after the
/// constructor.  `Read` and `Seek` belong to the thread that renders; the setters of the effects
/// and `Control` may come from another thread, and a change holds from the next granule or frame.
class MpegDecoder : public InputStream {
 public:
  MpegDecoder();

  /// Opens an MPEG stream on `source`, which stays the caller's, and decodes the first frame.
  /// 0, or -1 when no frame can be found.  `sampleRateOut` and `channelsOut` get the PCM rate in Hz
  /// and the channels delivered.  Samples are 32-bit floats of 16-bit scale, or 16-bit integers if
  /// `integerSamples` is not 0.  `decimationWanted` 0, 1, 2 halves the rate as often.
  /// `channelsWanted`: 0 as the stream has, 1, 2, or -2 for two equal channels.
  int Open(InputStream* source, int* sampleRateOut, int* channelsOut, int integerSamples = 0,
           int decimationWanted = 0, int channelsWanted = 0);

  int RawRead(void* buffer, int count) override;
  int RawPeek(void* buffer, int count) override;
  std::int64_t RawSeek(std::int64_t target) override;
  std::int64_t Control(int code, void* pointer = nullptr, int value = 0) override;

  const StreamInfo& Info() const { return streamInfo; }
  bool HasXingHeader() const { return hasXingHeader != 0; }

  /// "T. Enhancer": 0 off, 1, 2; a negative value is ignored.  Clears the echo.
  void SetEnhancer(int value);
  /// "Crystalizer": on above 0.  The coefficients are shared by all decoders.
  void SetCrystalizer(int value);
  /// "Wide Stereo": on above 0.
  void SetWideStereo(int value);
  /// "Vocal Reducer": a negative value is ignored.
  void SetVocalReducer(int value);
  /// The equaliser's gains are in the signal path while `value` is not 0; negative is ignored.
  void SetEqualiserSwitch(int value);
  /// 576 gains, one per spectral line; null means all 1.0.
  void SetLineGains(const float* gains);

 private:
  friend class DecoderProbe;  // lets the tests set up a stage by itself

  // Bit reader.
  int GetBits(int count);
  void CopyFrameBytes(unsigned char* destination, int count);

  // Sync and headers.
  void ResetInput();
  void RefillInput();
  int FindSync();
  int ReadFrameHeader(int first);
  void ReadHeaderFields();
  int FindFirstHeader(int* bitRate);

  // Decoder frames.
  int DecodeFrame(void* destination);
  int DecodeFirstFrame(void* destination);
  void DecodeLayer();
  void StartStream();
  int InitLayer(int bitRate);
  int ReckonFrameTotal(int bitRate);
  std::int64_t SeekOffset(std::int64_t frame, std::int64_t target);

  // Layers I and II.
  void DecodeLayer1();
  void DecodeLayer2();
  void ReadLayer1Frame(float (*left)[kSubbands], float (*right)[kSubbands]);
  void ReadLayer2Allocation(const AllocationTable& table, int bound);
  void ReadLayer2Scales(int subbands);
  /// A set of three samples of one subband; the channels from the first to the last have it.
  struct CodedSubband {
    const QuantClass* quant;
    int band, channel, lastChannel;
  };
  int ListCodedSubbands(int subbands, int bound, CodedSubband* coded) const;
  void ReadLayer2Granule(int granule, const CodedSubband* coded, int count);
  int JointBound(int subbands) const;

  // Layer III.
  void InitLayer3();
  void DecodeLayer3();
  void ReadSideInfo(GranuleInfo (*records)[2]);
  void ReadScfsi(GranuleInfo& record);
  int ReadGranuleInfo(GranuleInfo& record, int running);
  void FillReservoir(int mainDataBegin);
  void ReadScaleFactors(const GranuleInfo& record, int* store);
  int ReadHuffmanData(const GranuleInfo& record, const double* factors, float* values);
  int PlaceLines(const GranuleInfo& record, const float* lines, int count, float* values) const;
  int LongBands(const GranuleInfo& record) const;
  void FindFactors(const GranuleInfo& record, const int* store, double* factors) const;
  void StereoProcess(const GranuleInfo& record1, const int* store1);
  void FindIntensityPositions(const GranuleInfo& record1, const int* store1);
  void EnhanceTreble();
  void ReduceVocals();
  void HybridSynthesis(const GranuleInfo& record, int channel, int firstSlot);
  static void TakeOverlap(float* out, float* old);
  static void TransformMixed(float* out, const float* lines, float* old, int blockType,
                             int longBands);
  void RingOut(int firstGranule);
  int Lsf() const { return frame_.versionIndex != MPEG_VERSION_1; }
  int BandRow() const { return frame_.versionIndex * 3 + frame_.sampleRateIndex; }
  int ChannelsNow() const { return frame_.mode == MODE_SINGLE_CHANNEL ? 1 : 2; }
  bool IntensityChannel(int channel) const {
    return frame_.mode == MODE_JOINT_STEREO && (frame_.modeExtension & EXTENSION_INTENSITY) &&
           channel != 0;
  }

  // Synthesis.
  void ResetOutputMatrix();
  void SynthesisSetup();
  void SynthesisReset();
  void SynthesizeFrame(void* output);
  void MixChannels();
  void ApplyBandGains();
  void WritePcm(void* output);
  void SetOutputMatrix(const float* matrix);
  void SetBandGains(const float* gains);

  // What `GetBits` reads from: the input, or a Layer III frame's main data.
  struct Bits {
    const unsigned char* bitBase = nullptr;
    int* bitCursor = nullptr;
  } bits_;

  struct Input {
    InputStream* source = nullptr;
    int refillThreshold = 0;
    int inputBytes = 0;
    int inputBitPosition = 0;
    int sourceUnseekable = 0;
    int endOfInput = 0;
  } input_;

  // The header that was read last.
  struct FrameFields {
    int layerIndex = 0;
    int crcPresent = 0;
    int bitRateIndex = 0;  // 0 also marks that no frame follows
    int sampleRateIndex = 0;
    int paddingBit = 0;
    int mode = 0;
    int modeExtension = 0;
    int versionIndex = 0;
  } frame_;

  // What the first one says, which all others must say, too.
  struct FirstFields {
    int refLayer = 0;
    int refSampleRateIndex = 0;
    int refVersion = 0;
    int refMode = 0;  // joint stereo stored as 0
  } first_;

  // A frame's length without a length header: whole slots and a fraction.
  struct Slots {
    int slotBytes = 1;
    int slotsPerFrame = 0;
    int slotRemainder = 0;
    int slotDivisor = 1;
  } slots_;

  struct Progress {
    int firstFrame = 0;
    int frameNumber = 0;
    int frameOffset = 0;
    int frameTotal = 0;
    int frameBytes = 0;
    int frameHeld = 0;  // `framePcm` holds the frame before `frameNumber`
  } progress_;

  StreamInfo streamInfo;
  XingHeader xing = {};
  int hasXingHeader = 0;

  struct Output {
    int outputChannels = 0;
    int decimation = 0;
    int streamChannels = 0;
    int bytesPerSample = 4;
    int downmix = 0;
    int duplicate = 0;
    int dctChannels = 0;
    Shared<int> matrixOn;
    Shared<float> outputMatrix[9];
    Shared<float> bandGains[kSubbands];
    Shared<int> bandGainsOn;
  } output_;

  struct Effects {
    Shared<int> enhancerValue;
    Shared<int> enhancerCleared;  // the echo is cleared by the thread that decodes
    Shared<int> crystalizerOn;
    Shared<int> wideOn;
    Shared<int> vocalOn;
    Shared<int> eqOn;
    Shared<float> lineGains[kLines];
  } effects_;

  struct Layer1 {
    float layer1Scale[2][kSubbands];
    int layer1Alloc[2][kSubbands];
  } layer1_;

  struct Layer2 {
    float layer2Scale[2][3][kSubbands];
    int layer2Scfsi[2][kSubbands];
    const QuantClass* layer2Alloc[2][kSubbands];
  } layer2_;

  struct Layer3 {
    int mainDataBit = 0;
    int mainDataBytes = 0;
    std::int16_t lineIndex[3][kLines];
    int scaleFactors[2][39];
    int activeLines[2];  // all lines from here on are zero
    unsigned char intensityPosition[kLines];
  } layer3_;

  static constexpr int kInputCapacity = 16384;
  static constexpr int kReservoir = 4096;
  static constexpr int kReadAhead = 8;  // the bit reader's widest look beyond its position
  // Behind the input lie zeros for a damaged Layer II frame, which can ask for 4,608 bytes.
  static constexpr int kInputMargin = 8192;
  unsigned char inputBuffer[kInputCapacity + kInputMargin];
  unsigned char mainData[kReservoir + kReadAhead];
  static constexpr int kPastEnd = 16;  // for a last quad that begins two lines before the end
  alignas(64) float spectrum[2][kLines + kPastEnd];
  alignas(64) float overlap[2][kGranuleSlots][kSubbands];
  alignas(64) float subbandSamples[2][kFrameSlots][kSubbands];
  alignas(64) float channelPcm[2][kFrameSamples];
  alignas(64) unsigned char framePcm[2 * kFrameSamples * 4];
  alignas(64) SynthesisHistory synthBuffers[2];
  float enhancerRing[8][2][kLines];
};

}  // namespace kwo
