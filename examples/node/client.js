// Prints the GPU's name, the DSP's key 3 and the first DSP list of this machine:
//
//   npm install
//   node client.js path/to/ZynSystemInfo.dll
'use strict';
const path = require('node:path');
const koffi = require('koffi');

const SUCCESS = 0;
const DSP = 2;
const GPU = 3;
const CPU = 5;

if (process.argv.length !== 3) {
  console.error('usage: node client.js path/to/ZynSystemInfo.dll');
  process.exit(2);
}
const library = koffi.load(path.resolve(process.argv[2]));
const parameters = '(uint64_t component, uint64_t key, void *buffer, _Inout_ uint64_t *size)';
const getCapability = library.func(`uint32_t Soc_GetCapability${parameters}`);
const getCapabilitySerialized = library.func(`uint32_t Soc_GetCapabilitySerialized${parameters}`);

// Returns the answer's bytes, or null when the query fails.
function ask(getter, component, key, capacity) {
  const buffer = Buffer.alloc(capacity);
  const size = [capacity];
  const status = getter(component, key, buffer, size);
  return status === SUCCESS ? buffer.subarray(0, size[0]) : null;
}

// If the chip is unknown and no provider library describes it, the first query is answered from
// default values, and every later one fails.
function chipIsKnown() {
  ask(getCapability, CPU, 1, 8);
  return ask(getCapability, CPU, 1, 8) !== null;
}

if (chipIsKnown()) {
  const name = ask(getCapability, GPU, 4, 64);
  console.log('GPU 4:', name.toString('utf8', 0, name.length - 1)); // ends with a NUL
  console.log('DSP 3:', ask(getCapability, DSP, 3, 8).readBigInt64LE().toString());

  const entries = ask(getCapabilitySerialized, DSP, 16, 256); // each the DSP's index and a value
  const values = [];
  for (let at = 0; at < entries.length; at += 8) {
    values.push(entries.readUInt32LE(at + 4));
  }
  console.log('DSP 16:', values.join(' '));
} else {
  console.error('unknown chip: no provider library describes it');
  process.exitCode = 1;
}
