// The package for require(). Loading takes a promise in any case, so the ES module does the work.
const module_ = import('./node.js');

exports.load = (sources) => module_.then(({ load }) => load(sources));
