import { processorName } from "../engine/WorkletMessages.js";
import { TesseraeProcessor } from "./TesseraeProcessor.js";

registerProcessor(processorName, TesseraeProcessor);
