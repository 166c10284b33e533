import { processorName } from "../engine/WorkletMessages.js";
import { tapName } from "../record/RecordMessages.js";
import { RecordTap } from "./RecordTap.js";
import { TesseraeProcessor } from "./TesseraeProcessor.js";

registerProcessor(processorName, TesseraeProcessor);
registerProcessor(tapName, RecordTap);
